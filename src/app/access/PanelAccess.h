#pragma once

#include "AccessControl.h"

#include <vector>

namespace orvan {

class DemoPillItem;
class DunraPanelItem;
class GlossButtonItem;
class MelkoPanelItem;
class OrvanPanelItem;
class PanelItem;
class PushItem;
class ReadoutItem;

/// Which of a panel's controls a person meets in which order: top to bottom, and left to right
/// within a channel strip. Tab follows this order; screen readers list it. What each control is
/// called comes from the panel that made it (`spokenName`), what it is from its kind.
struct PanelFace {
    struct Strip {
        ReadoutItem* readout;
        std::vector<PushItem*> rows{};   ///< lamps (check boxes) and plain buttons
        GlossButtonItem* select = nullptr;
    };
    PanelItem* panel;
    QString name;
    PushItem* power = nullptr;
    std::vector<Strip> strips{};      ///< one a channel, in channel order
    std::vector<QGraphicsItem*> rest{}; ///< buttons, displays and the knob below or right of the strips
    std::function<std::optional<int>()> knobChannel;
};

PanelFace orvanFace(OrvanPanelItem& panel);
PanelFace dunraFace(DunraPanelItem& panel);
PanelFace melkoFace(MelkoPanelItem& panel);

/// Every panel's controls, described alike from its face.
PanelAccess panelAccess(const PanelFace& face);

/// The demo pill: a button that is checked while demo mode is on.
AccessControl demoPillAccess(DemoPillItem& pill);

} // namespace orvan
