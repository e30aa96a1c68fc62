#include "PanelAccessTables.h"

#include "ControlBuilders.h"
#include "MelkoPanelItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/ReadoutItem.h"

namespace orvan {

using namespace ControlBuilders;

namespace {

struct RowName {
    QString lamp;
    QString button;
    OrvanSwitch sw;
};

/// In the order of MelkoPanelItem's rows.
const std::array<RowName, 5> kRows{{
    {QStringLiteral("HPF 78 Hz"), QStringLiteral("HPF button"), OrvanSwitch::hpf},
    {QStringLiteral("48V"), QStringLiteral("48V button"), OrvanSwitch::phantom},
    {QStringLiteral("Polarity"), QStringLiteral("Polarity button"), OrvanSwitch::polarity},
    {QStringLiteral("Pad"), QStringLiteral("Pad button"), OrvanSwitch::pad},
    {QStringLiteral("Mute"), QStringLiteral("Mute button"), OrvanSwitch::mute},
}};

constexpr int kOnlyChannel = 0;

} // namespace

PanelAccess melkoAccess(MelkoPanelItem& panel)
{
    const OrvanMIDI& engine = panel.midi();
    PanelAccess access{.name = QStringLiteral("Melko"), .engine = &engine, .panel = &panel};
    auto& controls = access.controls;
    const auto onlyChannel = [] { return std::optional<int>(kOnlyChannel); };

    controls.push_back(gain(panel.display(), QAccessible::Slider, QStringLiteral("Gain"), engine, onlyChannel));
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        controls.push_back(lamp(panel.lamp(int(i)), kRows[i].lamp, engine, kOnlyChannel, kRows[i].sw));
        controls.push_back(pushButton(panel.button(int(i)), kRows[i].button));
    }
    controls.push_back(gain(panel.knob(), QAccessible::Dial, QStringLiteral("Gain knob"), engine, onlyChannel));
    controls.push_back(label(panel.listenOnlyLegend(), QStringLiteral("LISTEN ONLY"),
                             [] { return QStringLiteral("LISTEN ONLY"); }));
    return access;
}

} // namespace orvan
