#pragma once

#include "WheelNotches.h"

#include <QObject>

class QWheelEvent;

namespace orvan {

struct ScrollEvent;

/// The application-wide scroll monitor: every wheel event of the application passes through it
/// before normal delivery. While a control owns the scroll router the event goes to that control
/// and no further; otherwise it is delivered normally.
class WheelEventFilter final : public QObject {
public:
    /// Installs the filter on the application once; later calls do nothing.
    static void install();

    /// Qt's wheel event in the router's terms: a pixel delta is precise (points); an angle delta
    /// counts whole notches of 120 eighths of a degree, however finely the wheel splits them.
    ScrollEvent toScrollEvent(const QWheelEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;

    WheelNotches m_notches;
};

} // namespace orvan
