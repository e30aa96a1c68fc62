#include "WheelEventFilter.h"

#include "ScrollRouter.h"

#include <QCoreApplication>
#include <QWheelEvent>

namespace orvan {

namespace {
constexpr double kAngleDeltaPerLine = 120.0;
}

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
        scroll.deltaY = event.angleDelta().y() / kAngleDeltaPerLine;
    }
    return scroll;
}

bool WheelEventFilter::eventFilter(QObject* watched, QEvent* event)
{
    // Route at widget level: the window's own copy of the event comes first and is translated into
    // the widget's; consuming the widget's copy stops both delivery and propagation to parents.
    if (event->type() == QEvent::Wheel && watched->isWidgetType()) {
        auto* wheel = static_cast<QWheelEvent*>(event);
        if (ScrollRouter::shared().route(toScrollEvent(*wheel)))
            return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orvan
