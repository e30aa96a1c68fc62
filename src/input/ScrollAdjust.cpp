#include "ScrollAdjust.h"

namespace orvan {

ScrollAdjust::ScrollAdjust(StepSink onSteps, ScrollRouter& router)
    : m_onSteps(std::move(onSteps))
    , m_router(router)
{
}

ScrollAdjust::~ScrollAdjust()
{
    // A control that goes away must not leave a handler pointing at it.
    m_router.clear(m_id);
}

void ScrollAdjust::pointerEntered()
{
    m_router.registerOwner(m_id, [this](const ScrollEvent& event) {
        if (const int steps = m_accumulator.steps(event); steps != 0)
            m_onSteps(steps);
    });
}

void ScrollAdjust::pointerLeft()
{
    m_router.clear(m_id);
}

} // namespace orvan
