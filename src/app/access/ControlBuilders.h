#pragma once

#include "AccessControl.h"

class QGraphicsItem;

namespace orvan {

class GestureItem;
class LampRowItem;
class PushItem;
class RCUModel;

/// Short ways to describe the usual controls, each called by the name its panel gave it
/// (`spokenName`); each press or step goes through the item itself, so the keyboard reaches
/// exactly what a click, drag or scroll reaches.
namespace ControlBuilders {

AccessControl pushButton(PushItem* item);
/// A switch lamp: a check box that is checked while the lamp is lit.
AccessControl lamp(LampRowItem* item);
/// A readout or knob showing `channel`'s gain (none: no channel) and stepping it.
AccessControl gain(GestureItem* item, QAccessible::Role role, const OrvanMIDI& engine,
                   std::function<std::optional<int>()> channel);
/// A display read as text; its spoken name says which display it is.
AccessControl label(QGraphicsItem* item, std::function<QString()> text);

/// The lowest selected channel, which a panel's knob shows.
std::function<std::optional<int>()> lowestSelected(const RCUModel& model);

} // namespace ControlBuilders

} // namespace orvan
