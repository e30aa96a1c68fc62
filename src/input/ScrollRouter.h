#pragma once

#include "ScrollEvent.h"

#include <QUuid>
#include <functional>
#include <optional>

namespace orvan {

/// Hands every scroll event of the application to the one control under the pointer. While a
/// control owns it, scroll events are consumed and reach nothing else. Main thread only.
class ScrollRouter {
public:
    using Handler = std::function<void(const ScrollEvent&)>;

    static ScrollRouter& shared();

    /// Makes `owner` the receiver of scroll events; replaces any previous owner without telling it.
    void registerOwner(const QUuid& owner, Handler handler);

    /// Removes the registration only if `owner` is still the current owner, so a late leave of the
    /// previous control cannot unhook the control the pointer has just entered.
    void clear(const QUuid& owner);

    /// Gives the event to the owner. Returns true when it was consumed (there is an owner).
    bool route(const ScrollEvent& event);

    /// True while some control owns the wheel (its events will be consumed).
    bool hasOwner() const { return bool(m_handler); }

private:
    std::optional<QUuid> m_owner;
    Handler m_handler;
};

} // namespace orvan
