#pragma once

#include <QObject>
#include <type_traits>
#include <utility>

namespace orvan {

/// Stores `value` in `field` and emits `changed` (with the new value, when the signal takes one),
/// only when it differs: a change signal always means a change.
template <typename Owner, typename T, typename... Args>
void publish(Owner* owner, void (Owner::*changed)(Args...), T& field, std::type_identity_t<T> value)
{
    if (field == value)
        return;
    field = std::move(value);
    if constexpr (sizeof...(Args) == 0)
        emit(owner->*changed)();
    else
        emit(owner->*changed)(field);
}

} // namespace orvan
