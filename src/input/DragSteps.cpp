#include "DragSteps.h"

#include <QLineF>
#include <cmath>

namespace orvan {

DragSteps::DragSteps(DragProfile profile, StepSink sink)
    : m_profile(profile)
    , m_sink(std::move(sink))
{
}

void DragSteps::press(QPointF position)
{
    m_pressPoint = position;
    m_pressed = true;
    m_dragging = false;
    m_lastSteps = 0;
}

bool DragSteps::move(QPointF position)
{
    if (!m_pressed)
        return false;
    if (!m_dragging && QLineF(m_pressPoint, position).length() < m_profile.minimumDistance)
        return false;
    m_dragging = true;

    const double dy = position.y() - m_pressPoint.y();
    const int steps = int(std::trunc(-dy / m_profile.pointsPerStep));
    if (steps != m_lastSteps) {
        const int delta = steps - m_lastSteps;
        m_lastSteps = steps;
        m_sink(delta);
    }
    return true;
}

bool DragSteps::release()
{
    const bool wasDragging = m_dragging;
    m_pressed = false;
    m_dragging = false;
    m_lastSteps = 0;
    return wasDragging;
}

} // namespace orvan
