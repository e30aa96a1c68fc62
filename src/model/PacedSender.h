#pragma once

#include "ChannelSnapshot.h"
#include "ChannelState.h"
#include "DeviceSpec.h"
#include "OrvanSwitch.h"

#include <QList>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class QObject;

namespace orvan {

class OrvanMIDI;
class Scheduler;

/// The pauses the units are given while a whole unit's state is sent.
struct Pacing {
    std::chrono::milliseconds afterMessage; ///< after every message
    std::chrono::milliseconds afterPhantom; ///< further pause once +48V has been sent, to let it settle
};
inline constexpr Pacing kPacing{std::chrono::milliseconds(12), std::chrono::milliseconds(900)};

/// Whether a sequence may switch +48V on where it is off when its turn comes.
enum class PhantomConsent {
    confirmed,  ///< the user confirmed this send, +48V included
    keepOnOnly, ///< nobody was asked: +48V may only be held on where it is on already
};

/// Plans and sends a unit's state as one paced sequence: DI, +48V, a settling pause, gains with
/// pad and polarity, mute last; a whole unit for a recall or reset, only what differs for an undo.
/// Runs on the main thread through the scheduler and returns at once; sequences started one after
/// another run alongside and interleave.
class PacedSender {
public:
    /// One step: a message (or none, for the settling pause) and the pause after it.
    struct Step {
        enum class Kind { gain, toggle, pause };
        Kind kind = Kind::pause;
        int channel = 0;
        OrvanSwitch which = OrvanSwitch::pad;
        qint64 value = 0; ///< gain value, or 0/1 for a switch
        std::chrono::milliseconds pauseAfter{0};

        bool operator==(const Step&) const = default;
    };

    /// The steps for `snapshots` on a unit of kind `spec`, in sending order.
    static std::vector<Step> plan(const DeviceSpec& spec, const QList<ChannelSnapshot>& snapshots);

    /// The steps that take `channels` of `current` to `target`, in the same order as a recall but
    /// only where they differ (a gain is compared after the DI switch has moved it); the settling
    /// pause only follows +48V messages. A target gain that is unknown is left as it is.
    static std::vector<Step> planChanges(const DeviceSpec& spec, const ChannelStates& current,
                                         const ChannelStates& target, const QList<int>& channels);

    /// What the engine's `channels` become once `steps` are sent (on a unit that takes them).
    static ChannelStates applied(const DeviceSpec& spec, ChannelStates channels, const std::vector<Step>& steps);

    /// The messages among `steps` (the settling pause is none).
    static std::size_t messageCount(const std::vector<Step>& steps);

    /// Starts sending planned steps; the first message goes out on the scheduler's next turn, and
    /// `onFinished` runs once the pause after the last one is over. The sequence stops early only
    /// if `context` is destroyed.
    static void start(OrvanMIDI& midi, Scheduler& scheduler, QObject* context, std::vector<Step> steps,
                      PhantomConsent consent, std::function<void()> onFinished = {});
    /// Sends steps at once, without pauses: for a plan of one message.
    static void sendNow(OrvanMIDI& midi, const std::vector<Step>& steps, PhantomConsent consent);

    /// For quitting: every running sequence stops before its next message, except that one in the
    /// middle of its +48V messages sends the rest of them first, at its pace (a unit never gets
    /// half a +48V block). `whenStopped` runs once all have stopped, at once when none runs.
    static void stopAll(std::function<void()> whenStopped);
};

} // namespace orvan
