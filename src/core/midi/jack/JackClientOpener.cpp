#include "JackClientOpener.h"

#include "SerialWorker.h"

#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

namespace orvan::JackClientOpener {

namespace {

// How long a client whose server went may take to end its notification thread, and how often
// the worker looks. A thread we never heard from gets the shortest wait.
constexpr auto kThreadEndLimit = std::chrono::seconds(2);
constexpr auto kThreadEndLook = std::chrono::milliseconds(5);
constexpr auto kUnknownThreadGrace = std::chrono::milliseconds(100);
// How long closing one client waits for its siblings to hear of it, and how often it looks.
constexpr auto kSiblingHearLimit = std::chrono::milliseconds(250);
constexpr auto kSiblingHearLook = std::chrono::milliseconds(2);

/// Looks every `look` until `done()`, for at most `limit`: the worker's only way to wait on
/// JACK's threads, which tell nothing when they end or hear.
template <typename Done>
void pollUntil(Done done, std::chrono::milliseconds limit, std::chrono::milliseconds look)
{
    for (auto waited = std::chrono::milliseconds(0); waited < limit && !done(); waited += look)
        std::this_thread::sleep_for(look);
}

/// Waits, a bounded time, for a thread of this process to have ended.
void awaitThreadEnd(pid_t thread)
{
    if (thread == 0) {
        std::this_thread::sleep_for(kUnknownThreadGrace);
        return;
    }
    const QString task = QStringLiteral("/proc/self/task/%1").arg(thread);
    pollUntil([&] { return !QFileInfo::exists(task); }, kThreadEndLimit, kThreadEndLook);
}

/// Closes one client, then waits, a bounded time, until each open sibling heard it go.
///
/// JACK's client library takes one lock of the whole process for every notification it hands a
/// client, before our callback runs. Closing a client cancels its notification thread wherever
/// it is, then takes that same lock: a thread cancelled while it held it (busy with the news that
/// a sibling closed just before went away) leaves the lock taken for good, and the close waits
/// forever. The server tells of a client's going last of everything its close brings, and our
/// callback runs once the lock is free again; so the next close waits for that. A server that
/// went sends nothing: its clients are not waited for.
void closeHeard(JackClient& closing, const std::vector<JackClient*>& siblings)
{
    std::vector<JackClient*> listening;
    for (JackClient* s : siblings) {
        if (s != &closing && s->handle && !s->serverGone.load(std::memory_order_acquire)) {
            s->heardGone.store(false, std::memory_order_relaxed);
            s->awaitedGone.store(&closing.jackName, std::memory_order_release);
            listening.push_back(s);
        }
    }
    closing.in = nullptr;
    closing.out = nullptr;
    jack_client_close(std::exchange(closing.handle, nullptr));
    const auto allHeard = [&] {
        return std::ranges::all_of(listening, [](JackClient* s) {
            return s->heardGone.load(std::memory_order_acquire) || s->serverGone.load(std::memory_order_acquire);
        });
    };
    pollUntil(allHeard, kSiblingHearLimit, kSiblingHearLook);
    for (JackClient* s : listening)
        s->awaitedGone.store(nullptr, std::memory_order_release);
}

/// Opens one client and activates it. False when no server answers; true when one did, with
/// the client open (its handle set) or refused. `opened`: its siblings opened before it, which
/// hear of it if it must be closed again.
bool open(JackClient& c, const std::vector<JackClient*>& opened)
{
    jack_status_t status{};
    jack_client_t* handle = jack_client_open(c.name.toUtf8().constData(), JackNoStartServer, &status);
    if (!handle)
        return false;
    // Nothing else reads these until the client is activated and handed over.
    jack_ringbuffer_reset(c.incoming);
    jack_ringbuffer_reset(c.outgoing);
    c.serverGone = false;
    c.notifyThread = 0;
    c.setupChanged = false;
    c.graphChanged = false;
    c.connectionGone = false;
    c.awaitedGone = nullptr;
    c.jackName = jack_get_client_name(handle);
    c.handle = handle;

    setCallbacks(handle, c);
    c.in = nullptr;
    c.out = nullptr;
    c.registerPorts();
    if (jack_activate(handle) == 0)
        return true;
    closeHeard(c, opened);
    return true; // the server answered; this client alone failed
}

} // namespace

OpenRound openInTurn(const std::vector<JackClient*>& closed, const std::vector<JackClient*>& live)
{
    // JACK's client library, asked to open a client while it knows the server went, deletes every
    // client still open by itself; our close of one of them afterwards would crash the app (seen
    // in soaks of server stops, once in about a hundred). So no client opens while one of ours
    // has heard its server go and is not closed yet: the main thread has it closed first. (The
    // library learns of the death a moment before our shutdown callback runs; that moment stays.)
    const auto serverWent = [](const std::vector<JackClient*>& clients) {
        return std::ranges::any_of(clients, [](JackClient* c) { return c->serverGone.load(std::memory_order_acquire); });
    };
    OpenRound round;
    for (JackClient* c : closed) {
        if (serverWent(live) || serverWent(round.opened))
            break;
        if (!open(*c, round.opened))
            break; // no server: one failed attempt is enough for this round
        round.answered = true;
        if (c->handle)
            round.opened.push_back(c);
    }
    return round;
}

void closeInTurn(const std::vector<JackClient*>& clients)
{
    for (JackClient* c : clients) {
        if (!c->handle)
            continue;
        if (c->serverGone.load(std::memory_order_acquire)) {
            c->in = nullptr;
            c->out = nullptr;
            closeAfterServerGone({{std::exchange(c->handle, nullptr), c->notifyThread.load(std::memory_order_relaxed)}});
        } else {
            closeHeard(*c, clients);
        }
    }
}

bool closeAllWithin(SerialWorker& worker, const std::vector<JackClient*>& clients, std::chrono::milliseconds limit)
{
    // The task holds what it closes, not the caller, which may be gone before it ends.
    auto closed = std::make_shared<std::promise<void>>();
    std::future<void> allClosed = closed->get_future();
    worker.post([clients, closed] {
        closeInTurn(clients);
        closed->set_value();
    });
    return allClosed.wait_for(limit) == std::future_status::ready;
}

void closeAfterServerGone(const std::vector<std::pair<jack_client_t*, pid_t>>& clients)
{
    // JACK's notification thread leaves through its error reporting (strerror, which takes a C
    // library lock the first time); cancelled there by the closing, it would keep the lock for
    // good, and the next error reported (our next open, with the server still down) would wait
    // forever. So each is closed once that thread has ended.
    for (const auto& [handle, notifyThread] : clients) {
        awaitThreadEnd(notifyThread);
        jack_client_close(handle);
    }
}

} // namespace orvan::JackClientOpener
