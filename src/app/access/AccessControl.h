#pragma once

#include <QAccessible>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

class QGraphicsItem;

namespace orvan {

class OrvanMIDI;

/// A gain control as the keyboard and screen readers use it: which channel's gain it shows (none
/// while a knob has no selected channel) and how it steps, exactly as a drag or scroll does.
struct GainControl {
    const OrvanMIDI* engine = nullptr;
    std::function<std::optional<int>()> channel;
    std::function<void(int steps)> step;
};

/// One control of a panel, described for the keyboard and for screen readers: what it is, what a
/// person calls it, and what pressing or stepping it does. The item's tooltip is its description.
struct AccessControl {
    QGraphicsItem* item = nullptr;
    QAccessible::Role role = QAccessible::PushButton;
    QString name{};
    std::function<void()> press{};      ///< Space, Return and the press or toggle action; none for labels
    std::function<bool()> isChecked{}; ///< for check boxes and toggling buttons: the lamp or ring is lit
    std::function<bool()> isSelected{}; ///< for readouts: the channel is selected
    std::function<QString()> text{};   ///< for labels: what the display shows (their spoken name)
    std::optional<GainControl> gain{};

    bool isFocusable() const { return bool(press) || gain.has_value(); }
};

/// One panel: a group named after its unit, its controls in reading order.
struct PanelAccess {
    QString name;
    const OrvanMIDI* engine = nullptr;
    QGraphicsItem* panel = nullptr;
    std::vector<AccessControl> controls{};
};

} // namespace orvan
