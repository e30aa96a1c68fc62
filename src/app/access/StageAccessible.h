#pragma once

#include <QAccessibleWidget>
#include <vector>

namespace orvan {

class AccessLayer;

/// The window as a screen reader sees it. Its panels are painted scene items, not widgets, so
/// instead of the bare viewport it lists the three panel groups and the demo pill, in reading
/// order, and reports the control that has keyboard focus.
class StageAccessible final : public QAccessibleWidget {
public:
    explicit StageAccessible(QWidget* window);

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

    /// Answers for the application's window; other objects are left to Qt.
    static QAccessibleInterface* factory(const QString& className, QObject* object);

private:
    AccessLayer* layer() const;
    std::vector<QAccessibleInterface*> children() const;
};

} // namespace orvan
