#pragma once

#include "AccessControl.h"
#include "OrvanSwitch.h"

namespace orvan {

class GestureItem;
class GlossButtonItem;
class PushItem;
class RCUModel;

/// Short ways to describe the usual controls; each press or step goes through the item itself, so
/// the keyboard reaches exactly what a click, drag or scroll reaches.
namespace ControlBuilders {

AccessControl pushButton(PushItem* item, QString name);
/// A switch lamp: a check box that is checked while the engine says the switch is on.
AccessControl lamp(PushItem* item, QString name, const OrvanMIDI& engine, int channel, std::optional<OrvanSwitch> sw);
/// A readout or knob showing `channel`'s gain (none: no channel) and stepping it.
AccessControl gain(GestureItem* item, QAccessible::Role role, QString name, const OrvanMIDI& engine,
                   std::function<std::optional<int>()> channel);
/// A display read as text; `purpose` says which display it is.
AccessControl label(QGraphicsItem* item, QString purpose, std::function<QString()> text);

/// The four preset buttons (previous, next, SAVE, RECALL, as every panel makes them).
void addPresetButtons(std::vector<AccessControl>& controls, const QList<GlossButtonItem*>& buttons);

/// The lowest selected channel, which a panel's knob shows.
std::function<std::optional<int>()> lowestSelected(const RCUModel& model);

} // namespace ControlBuilders

} // namespace orvan
