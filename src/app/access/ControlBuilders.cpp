#include "ControlBuilders.h"

#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "items/GestureItem.h"
#include "items/GlossButtonItem.h"
#include "items/PushItem.h"

namespace orvan::ControlBuilders {

AccessControl pushButton(PushItem* item, QString name)
{
    return {.item = item, .role = QAccessible::PushButton, .name = std::move(name),
            .press = [item] { item->activate(); }};
}

AccessControl lamp(PushItem* item, QString name, const OrvanMIDI& engine, int channel, std::optional<OrvanSwitch> sw)
{
    AccessControl control = pushButton(item, std::move(name));
    control.role = QAccessible::CheckBox;
    control.isChecked = [&engine, channel, sw] { return sw && engine.channels().value(channel).isOn(*sw); };
    return control;
}

AccessControl gain(GestureItem* item, QAccessible::Role role, QString name, const OrvanMIDI& engine,
                   std::function<std::optional<int>()> channel)
{
    AccessControl control{.item = item, .role = role, .name = std::move(name)};
    if (item->hasClick())
        control.press = [item] { item->activate(); };
    control.gain = GainControl{.engine = &engine, .channel = std::move(channel),
                               .step = [item](int steps) { item->step(steps); }};
    return control;
}

AccessControl label(QGraphicsItem* item, QString purpose, std::function<QString()> text)
{
    return {.item = item, .role = QAccessible::StaticText, .name = std::move(purpose), .text = std::move(text)};
}

void addPresetButtons(std::vector<AccessControl>& controls, const QList<GlossButtonItem*>& buttons)
{
    static const std::array<QString, 4> names{QStringLiteral("Previous preset"), QStringLiteral("Next preset"),
                                              QStringLiteral("Save preset"), QStringLiteral("Recall preset")};
    for (int i = 0; i < buttons.size() && i < int(names.size()); ++i)
        controls.push_back(pushButton(buttons[i], names[std::size_t(i)]));
}

std::function<std::optional<int>()> lowestSelected(const RCUModel& model)
{
    return [&model]() -> std::optional<int> {
        if (model.selected().isEmpty())
            return std::nullopt;
        return model.selected().front();
    };
}

} // namespace orvan::ControlBuilders
