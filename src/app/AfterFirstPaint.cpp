#include "AfterFirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace orvan {

namespace {

/// Watches one widget's paint events until the first, then runs its task and goes.
class FirstPaintWatch final : public QObject {
public:
    FirstPaintWatch(QWidget& surface, std::function<void()> task)
        : QObject(&surface)
        , m_task(std::move(task))
    {
        surface.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // After this paint has reached the screen.
            QTimer::singleShot(0, this, [this] {
                m_task();
                deleteLater();
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_task;
};

} // namespace

void afterFirstPaint(QWidget& surface, std::function<void()> task)
{
    new FirstPaintWatch(surface, std::move(task));
}

} // namespace orvan
