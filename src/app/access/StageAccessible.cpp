#include "StageAccessible.h"

#include "AccessLayer.h"
#include "PanelGroupAccessible.h"
#include "stage/StageWindow.h"

namespace orvan {

StageAccessible::StageAccessible(QWidget* window)
    : QAccessibleWidget(window, QAccessible::Window)
{
}

QAccessibleInterface* StageAccessible::factory(const QString&, QObject* object)
{
    if (auto* window = dynamic_cast<StageWindow*>(object))
        return new StageAccessible(window);
    return nullptr;
}

AccessLayer* StageAccessible::layer() const
{
    // Looked up on each use: the layer may come after the window and goes before it.
    AccessLayer* layer = widget()->findChild<AccessLayer*>(QString(), Qt::FindDirectChildrenOnly);
    if (layer)
        layer->buildTree();
    return layer;
}

int StageAccessible::childCount() const
{
    const AccessLayer* layer = this->layer();
    return layer ? layer->topLevelCount() : 0;
}

QAccessibleInterface* StageAccessible::child(int index) const
{
    const AccessLayer* layer = this->layer();
    return layer ? layer->topLevel(index) : nullptr;
}

int StageAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const AccessLayer* layer = this->layer();
    if (!layer)
        return -1;
    for (int i = 0; i < layer->topLevelCount(); ++i) {
        if (layer->topLevel(i) == child)
            return i;
    }
    return -1;
}

QAccessibleInterface* StageAccessible::childAt(int x, int y) const
{
    const AccessLayer* layer = this->layer();
    if (!layer)
        return nullptr;
    std::vector<QAccessibleInterface*> children;
    for (int i = 0; i < layer->topLevelCount(); ++i)
        children.push_back(layer->topLevel(i));
    return childAtPoint(children, x, y);
}

QAccessibleInterface* StageAccessible::focusChild() const
{
    const AccessLayer* layer = this->layer();
    if (layer && layer->focused())
        return layer->interfaceFor(layer->focused());
    return QAccessibleWidget::focusChild();
}

} // namespace orvan
