#include "WheelEventFilter.h"

#include "ScrollRouter.h"

#include <QCoreApplication>
#include <QWheelEvent>

namespace orvan {

void WheelEventFilter::install()
{
    static WheelEventFilter* filter = nullptr;
    if (filter || !QCoreApplication::instance())
        return;
    filter = new WheelEventFilter(QCoreApplication::instance());
    QCoreApplication::instance()->installEventFilter(filter);
}

ScrollEvent WheelEventFilter::toScrollEvent(const QWheelEvent& event)
{
    ScrollEvent scroll;
    scroll.inverted = event.inverted();
    if (!event.pixelDelta().isNull()) {
        scroll.precise = true;
        scroll.deltaY = event.pixelDelta().y();
    } else {
        // A partial notch gives 0, which the accumulator turns into no step.
        scroll.deltaY = m_notches.add(event.angleDelta().y());
    }
    return scroll;
}

bool WheelEventFilter::eventFilter(QObject* watched, QEvent* event)
{
    // Route at widget level: the window's own copy of the event comes first and is translated into
    // the widget's; consuming the widget's copy stops both delivery and propagation to parents.
    if (event->type() == QEvent::Wheel && watched->isWidgetType()) {
        // Only events a control takes count towards a notch: one that nobody owns is delivered to
        // the widget and then to each of its parents, and must not be counted each time.
        ScrollRouter& router = ScrollRouter::shared();
        if (router.hasOwner()) {
            router.route(toScrollEvent(*static_cast<QWheelEvent*>(event)));
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orvan
