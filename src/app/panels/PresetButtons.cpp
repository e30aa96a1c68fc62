#include "PresetButtons.h"

#include "RCUModel.h"
#include "PanelItem.h"
#include "items/GlossButtonItem.h"

namespace orvan {

QList<GlossButtonItem*> makePresetButtons(RCUModel& model, const PresetButtonRow& row, QGraphicsItem* panel)
{
    const struct {
        QString caption;
        QString spoken;
        std::function<void()> action;
    } table[] = {
        {QStringLiteral("\u25C0"), QStringLiteral("Previous preset"), [&model] { model.stepPreset(-1); }},
        {QStringLiteral("\u25B6"), QStringLiteral("Next preset"), [&model] { model.stepPreset(1); }},
        {QStringLiteral("SAVE"), QStringLiteral("Save preset"), [&model] { model.beginSave(); }},
        {QStringLiteral("RECALL"), QStringLiteral("Recall preset"), [&model] { model.requestRecall(); }},
    };
    QList<GlossButtonItem*> buttons;
    for (std::size_t i = 0; i < std::size(table); ++i) {
        auto* button = new GlossButtonItem(QSizeF(row.width[i], row.height), table[i].action, panel);
        button->setCaption(table[i].caption, row.caption);
        buttons << placeControl(button, {row.x[i], row.y}, table[i].spoken);
    }
    return buttons;
}

} // namespace orvan
