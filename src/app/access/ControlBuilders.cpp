#include "ControlBuilders.h"

#include "RCUModel.h"
#include "SpokenName.h"
#include "items/GestureItem.h"
#include "items/LampRowItem.h"
#include "items/PushItem.h"

namespace orvan::ControlBuilders {

AccessControl pushButton(PushItem* item)
{
    return {.item = item, .role = QAccessible::PushButton, .name = spokenName(item),
            .press = [item] { item->activate(); }};
}

AccessControl lamp(LampRowItem* item)
{
    AccessControl control = pushButton(item);
    control.role = QAccessible::CheckBox;
    control.isChecked = [item] { return item->isOn(); };
    return control;
}

AccessControl gain(GestureItem* item, QAccessible::Role role, const OrvanMIDI& engine,
                   std::function<std::optional<int>()> channel)
{
    AccessControl control{.item = item, .role = role, .name = spokenName(item)};
    if (item->hasClick())
        control.press = [item] { item->activate(); };
    control.gain = GainControl{.engine = &engine, .channel = std::move(channel),
                               .step = [item](int steps) { item->step(steps); }};
    return control;
}

AccessControl label(QGraphicsItem* item, std::function<QString()> text)
{
    return {.item = item, .role = QAccessible::StaticText, .name = spokenName(item), .text = std::move(text)};
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
