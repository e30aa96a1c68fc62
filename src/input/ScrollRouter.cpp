#include "ScrollRouter.h"

namespace orvan {

ScrollRouter& ScrollRouter::shared()
{
    static ScrollRouter router;
    return router;
}

void ScrollRouter::registerOwner(const QUuid& owner, Handler handler)
{
    m_owner = owner;
    m_handler = std::move(handler);
}

void ScrollRouter::clear(const QUuid& owner)
{
    if (m_owner != owner)
        return;
    m_owner.reset();
    m_handler = nullptr;
}

bool ScrollRouter::route(const ScrollEvent& event)
{
    if (!m_handler)
        return false;
    // Copy: the handler may hand the wheel to another control while it runs.
    const Handler handler = m_handler;
    handler(event);
    return true;
}

} // namespace orvan
