#pragma once

#include <pthread.h>
#include <type_traits>

namespace orvan {

/// JACK ends a client's threads with asynchronous cancellation when the client closes: at any
/// instruction. Cut inside our code, the unwinding would meet a noexcept frame (the eventfd write,
/// the MIDI parser) and abort the process ("terminate called without an active exception"), or
/// leave a ring buffer write half done. So every JACK callback runs its body through this, which
/// holds cancellation off meanwhile; one that came meanwhile acts as the callback returns, in a
/// frame that may be unwound (never restore it from a destructor: those are noexcept).
template <typename Body>
auto uncancellable(Body body)
{
    int previous = PTHREAD_CANCEL_ENABLE;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous);
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
        pthread_setcancelstate(previous, nullptr);
    } else {
        const auto result = body();
        pthread_setcancelstate(previous, nullptr);
        return result;
    }
}

} // namespace orvan
