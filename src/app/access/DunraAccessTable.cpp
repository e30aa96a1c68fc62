#include "PanelAccessTables.h"

#include "ControlBuilders.h"
#include "DunraPanelItem.h"
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

struct CellName {
    QString name; ///< "%1" is the channel number
    OrvanSwitch sw;
};

/// In the order of DunraPanelItem::cell() columns.
const std::array<CellName, 5> kCells{{
    {QStringLiteral("Channel %1 DI"), OrvanSwitch::di},
    {QStringLiteral("Channel %1 48V"), OrvanSwitch::phantom},
    {QStringLiteral("Channel %1 polarity"), OrvanSwitch::polarity},
    {QStringLiteral("Channel %1 pad"), OrvanSwitch::pad},
    {QStringLiteral("Channel %1 mute"), OrvanSwitch::mute},
}};

/// In the order of DunraPanelItem::sharedButtons().
const std::array<QString, 6> kSharedButtons{
    QStringLiteral("DI on selected channels"),  QStringLiteral("48V on selected channels"),
    QStringLiteral("Polarity on selected channels"), QStringLiteral("Pad on selected channels"),
    QStringLiteral("Mute on selected channels"), QStringLiteral("Select all or clear"),
};

constexpr int kChannels = 2;

} // namespace

PanelAccess dunraAccess(DunraPanelItem& panel)
{
    RCUModel& model = panel.model();
    const OrvanMIDI& engine = panel.midi();
    PanelAccess access{.name = QStringLiteral("Dunra"), .engine = &engine, .panel = &panel};
    auto& controls = access.controls;

    controls.push_back(pushButton(panel.powerButton(), QStringLiteral("Power")));
    for (int c = 0; c < kChannels; ++c) {
        const QString n = QString::number(c + 1);
        AccessControl readout = gain(panel.readout(c), QAccessible::Slider, QStringLiteral("Channel %1 gain").arg(n),
                                     engine, [c] { return std::optional<int>(c); });
        readout.isSelected = [&model, c] { return model.selected().contains(c); };
        controls.push_back(readout);
        for (std::size_t i = 0; i < kCells.size(); ++i)
            controls.push_back(lamp(panel.cell(c, int(i)), kCells[i].name.arg(n), engine, c, kCells[i].sw));
    }
    for (std::size_t i = 0; i < kSharedButtons.size(); ++i)
        controls.push_back(pushButton(panel.sharedButtons()[int(i)], kSharedButtons[i]));
    controls.push_back(gain(panel.knob(), QAccessible::Dial, QStringLiteral("Gain knob"), engine, lowestSelected(model)));
    controls.push_back(label(panel.presetDisplay(), QStringLiteral("Dunra preset"),
                             [&model] { return presetDisplayText(model); }));
    addPresetButtons(controls, panel.presetButtons());
    return access;
}

} // namespace orvan
