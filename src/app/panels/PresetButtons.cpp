#include "PresetButtons.h"

#include "RCUModel.h"
#include "items/GlossButtonItem.h"

namespace orvan {

QList<GlossButtonItem*> makePresetButtons(RCUModel& model, const PresetButtonRow& row, QGraphicsItem* panel)
{
    const std::array<QString, 4> labels{QStringLiteral("\u25C0"), QStringLiteral("\u25B6"), QStringLiteral("SAVE"),
                                        QStringLiteral("RECALL")};
    const std::array<std::function<void()>, 4> actions{
        [&model] { model.stepPreset(-1); }, [&model] { model.stepPreset(1); }, [&model] { model.beginSave(); },
        [&model] { model.requestRecall(); }};
    QList<GlossButtonItem*> buttons;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        auto* button = new GlossButtonItem(QSizeF(row.width[i], row.height), actions[i], panel);
        button->setCaption(labels[i], row.caption);
        button->setPos(row.x[i], row.y);
        buttons << button;
    }
    return buttons;
}

} // namespace orvan
