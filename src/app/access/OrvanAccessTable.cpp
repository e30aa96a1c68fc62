#include "PanelAccessTables.h"

#include "ChannelColumn.h"
#include "ControlBuilders.h"
#include "OrvanMIDI.h"
#include "OrvanPanelItem.h"
#include "RCUModel.h"
#include "items/BlueDisplayItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/PowerButtonItem.h"
#include "items/ReadoutItem.h"

namespace orvan {

using namespace ControlBuilders;

namespace {

struct LampName {
    QString name; ///< "%1" is the channel number
    std::optional<OrvanSwitch> sw;
};

/// In the order of ChannelColumn::rows().
const std::array<LampName, 5> kColumnLamps{{
    {QStringLiteral("Channel %1 I/O"), std::nullopt},
    {QStringLiteral("Channel %1 48V"), OrvanSwitch::phantom},
    {QStringLiteral("Channel %1 polarity"), OrvanSwitch::polarity},
    {QStringLiteral("Channel %1 pad"), OrvanSwitch::pad},
    {QStringLiteral("Channel %1 mute"), OrvanSwitch::mute},
}};

/// In the order of OrvanPanelItem::sharedButtons().
const std::array<QString, 6> kSharedButtons{
    QStringLiteral("I/O on selected channels"),      QStringLiteral("48V on selected channels"),
    QStringLiteral("Polarity on selected channels"), QStringLiteral("Pad on selected channels"),
    QStringLiteral("Mute on selected channels"),     QStringLiteral("Select all or clear"),
};

} // namespace

PanelAccess orvanAccess(OrvanPanelItem& panel)
{
    RCUModel& model = panel.model();
    const OrvanMIDI& engine = panel.midi();
    PanelAccess access{.name = QStringLiteral("Orvan"), .engine = &engine, .panel = &panel};
    auto& controls = access.controls;

    controls.push_back(pushButton(panel.powerButton(), QStringLiteral("Power")));
    for (int c = 0; c < panel.columns().size(); ++c) {
        const ChannelColumn* column = panel.columns()[c];
        const QString n = QString::number(c + 1);
        AccessControl readout = gain(column->readout(), QAccessible::Slider, QStringLiteral("Channel %1 gain").arg(n),
                                     engine, [c] { return std::optional<int>(c); });
        readout.isSelected = [&model, c] { return model.selected().contains(c); };
        controls.push_back(readout);
        for (std::size_t row = 0; row < kColumnLamps.size(); ++row)
            controls.push_back(lamp(column->rows()[int(row)], kColumnLamps[row].name.arg(n), engine, c,
                                    kColumnLamps[row].sw));
        AccessControl select = pushButton(column->selectButton(), QStringLiteral("Select channel %1").arg(n));
        select.isChecked = [&model, c] { return model.selected().contains(c); };
        controls.push_back(select);
    }
    for (std::size_t i = 0; i < kSharedButtons.size(); ++i)
        controls.push_back(pushButton(panel.sharedButtons()[int(i)], kSharedButtons[i]));
    controls.push_back(label(panel.statusDisplay(), QStringLiteral("Orvan status display"), [&model] {
        const auto [first, second] = model.lcdLines();
        return first + QStringLiteral(", ") + second;
    }));
    controls.push_back(label(panel.presetDisplay(), QStringLiteral("Orvan preset"),
                             [&model] { return presetDisplayText(model); }));
    addPresetButtons(controls, panel.presetButtons());
    controls.push_back(gain(panel.knob(), QAccessible::Dial, QStringLiteral("Gain knob"), engine, lowestSelected(model)));
    return access;
}

} // namespace orvan
