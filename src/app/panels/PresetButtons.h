#pragma once

#include "Lettering.h"

#include <QList>
#include <array>

class QGraphicsItem;

namespace orvan {

class GlossButtonItem;
class RCUModel;

/// Where a panel puts its four preset buttons (previous, next, SAVE, RECALL), all on one row.
struct PresetButtonRow {
    std::array<double, 4> x;
    std::array<double, 4> width;
    double y;
    double height;
    render::LetteringStyle caption;
};

/// Makes the four preset buttons, wired to the model's preset operations, as children of `panel`.
QList<GlossButtonItem*> makePresetButtons(RCUModel& model, const PresetButtonRow& row, QGraphicsItem* panel);

} // namespace orvan
