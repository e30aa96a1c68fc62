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

AccessibleChildren StageAccessible::children() const
{
    const AccessLayer* layer = this->layer();
    return layer ? layer->topLevels() : AccessibleChildren();
}

int StageAccessible::childCount() const
{
    return int(children().size());
}

QAccessibleInterface* StageAccessible::child(int index) const
{
    return childAtIndex(children(), index);
}

int StageAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    return indexAmong(children(), child);
}

QAccessibleInterface* StageAccessible::childAt(int x, int y) const
{
    return childAtPoint(children(), x, y);
}

QAccessibleInterface* StageAccessible::focusChild() const
{
    const AccessLayer* layer = this->layer();
    if (layer && layer->focused())
        return layer->interfaceFor(layer->focused());
    return QAccessibleWidget::focusChild();
}

} // namespace orvan
