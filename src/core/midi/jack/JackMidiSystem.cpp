#include "JackMidiSystem.h"

#include "../MainThreadSignal.h"
#include "../MidiBytes.h"
#include "../alsa/AlsaPortListing.h"
#include "JackServerWatch.h"
#include "SerialWorker.h"

#include <jack/jack.h>
#include <jack/metadata.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <future>
#include <pthread.h>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <unistd.h>

namespace orvan {

namespace {

constexpr std::size_t kWordSize = sizeof(quint32);
// Incoming: a second of a 10,000 messages-per-second flood waits here if the main loop is busy.
constexpr std::size_t kIncomingWords = std::size_t(1) << 16;
// Outgoing: far more than a whole unit's state, sent in one go.
constexpr std::size_t kOutgoingWords = std::size_t(1) << 12;
constexpr jack_nframes_t kFirstFrame = 0;
// Cycles after which a connection just made is surely in the graph the process callback runs in.
constexpr jack_nframes_t kConnectionCycles = 2;
// How long a client whose server went may take to end its notification thread, and how often the
// worker looks. A thread we never heard from gets the shortest wait.
constexpr auto kThreadEndLimit = std::chrono::seconds(2);
constexpr auto kThreadEndLook = std::chrono::milliseconds(5);
constexpr auto kUnknownThreadGrace = std::chrono::milliseconds(100);
// How long closing one client waits for each sibling to hear of it, and how long the app's exit
// waits for all closes (see ~JackMidiSystem).
constexpr auto kSiblingHearLimit = std::chrono::milliseconds(250);
constexpr auto kSiblingHearLook = std::chrono::milliseconds(2);
constexpr auto kExitCloseLimit = std::chrono::seconds(3);

/// An outgoing message and the frame it is due at.
struct OutgoingMessage {
    quint32 word;
    jack_nframes_t due;
};

void silent(const char*) {}

QString ownClientPrefix()
{
    return QLatin1String(kOwnClientPrefix);
}

/// JACK ends a client's threads with asynchronous cancellation when the client closes: at any
/// instruction. Cut inside our code, the unwinding would meet a noexcept frame (the eventfd write,
/// the MIDI parser) and abort the app ("terminate called without an active exception"), or leave
/// a ring buffer write half done. So each callback holds cancellation off while it runs; one that
/// came meanwhile acts as the callback returns, in a frame that may be unwound (never restore it
/// from a destructor: those are noexcept).
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

} // namespace

struct JackMidiSystem::Client {
    QString name;
    NotifyCallback notify;
    ReceiveCallback receive;
    QString inName;
    QString outName;
    bool wantsIn = false;
    bool wantsOut = false;

    // Written by the worker while it opens the client, before activation; read by the process
    // callback, and by the main thread once the client is handed over (isLive).
    jack_client_t* handle = nullptr;
    std::atomic<jack_port_t*> in{nullptr};
    std::atomic<jack_port_t*> out{nullptr};
    jack_ringbuffer_t* incoming = nullptr;
    jack_ringbuffer_t* outgoing = nullptr;
    std::atomic<bool> setupChanged{false};
    std::atomic<bool> serverGone{false};
    std::atomic<bool> graphChanged{false};
    std::atomic<bool> connectionGone{false}; // some connection in the graph went, perhaps ours
    std::atomic<quint64> dropped{0};
    std::atomic<pid_t> notifyThread{0}; // JACK's notification thread of this opening, once heard from
    // Closing in turn (closeInTurn): the name JACK gave this opening, written by the worker before
    // activation; and, while a sibling closes, that sibling's name and whether we heard it go.
    std::string jackName;
    std::atomic<const std::string*> awaitedGone{nullptr};
    std::atomic<bool> heardGone{false};
    std::unique_ptr<MainThreadSignal> wake;
    std::unique_ptr<RetryBackoff> wiringRetry;

    // Main thread only.
    JackMidiSystem* owner = nullptr; // none once the system is gone and this client left behind
    bool isLive = false;  // open, handed over, and its server not known to be gone
    QString outWanted;    // the destination our "Out" should be wired to
    bool outWired = false; // and whether it was, when last looked at
    // Sources whose client was not yet active when we attached; retried when the graph changes.
    std::set<QString> pendingAttach;
    // Sources to detach once the rescan that asked for it is over, unless it attached them again.
    std::set<QString> pendingDetach;
    std::vector<quint32> words; // reused between wakes
};

namespace {

using Client = JackMidiSystem::Client;

// --- JACK's real-time thread: ring buffers and one eventfd write only. --------------------------

int processCycle(jack_nframes_t frames, Client* c)
{
    if (jack_port_t* in = c->in.load(std::memory_order_acquire)) {
        void* buffer = jack_port_get_buffer(in, frames);
        const jack_nframes_t count = jack_midi_get_event_count(buffer);
        bool received = false;
        for (jack_nframes_t i = 0; i < count; ++i) {
            jack_midi_event_t event;
            if (jack_midi_event_get(&event, buffer, i) != 0)
                continue;
            // One event may carry several messages (running status, realtime bytes, SysEx).
            MidiBytes::forEachControlChange(std::span<const quint8>(event.buffer, event.size), [&](quint32 word) {
                if (jack_ringbuffer_write_space(c->incoming) < kWordSize) {
                    c->dropped.fetch_add(1, std::memory_order_relaxed);
                    return;
                }
                jack_ringbuffer_write(c->incoming, reinterpret_cast<const char*>(&word), kWordSize);
                received = true;
            });
        }
        if (received)
            c->wake->raise();
    }

    if (jack_port_t* out = c->out.load(std::memory_order_acquire)) {
        void* buffer = jack_port_get_buffer(out, frames);
        jack_midi_clear_buffer(buffer);
        const jack_nframes_t cycleStart = jack_last_frame_time(c->handle);
        jack_nframes_t lastOffset = kFirstFrame;
        while (jack_ringbuffer_read_space(c->outgoing) >= sizeof(OutgoingMessage)) {
            OutgoingMessage message{};
            jack_ringbuffer_peek(c->outgoing, reinterpret_cast<char*>(&message), sizeof message);
            // Each message leaves a fixed delay after it was sent, at its own frame: the delay
            // covers a newly wired connection, and being the same for every message it keeps
            // the pacing the main thread gave them. A late one goes at once, in order.
            const auto ahead = qint32(message.due - cycleStart);
            if (ahead >= qint32(frames))
                break;
            const jack_nframes_t offset = std::max<jack_nframes_t>(lastOffset, jack_nframes_t(std::max(ahead, 0)));
            MidiBytes::Message bytes{};
            const std::size_t size = MidiBytes::toBytes(message.word, bytes);
            // A full port buffer leaves the rest for the next cycle.
            if (size > 0 && jack_midi_event_write(buffer, offset, bytes.data(), size) != 0)
                break;
            lastOffset = offset;
            jack_ringbuffer_read_advance(c->outgoing, sizeof message);
        }
    }
    return 0;
}

int onProcess(jack_nframes_t frames, void* arg)
{
    return uncancellable([&] { return processCycle(frames, static_cast<Client*>(arg)); });
}

// --- JACK's notification thread: flag and wake only. --------------------------------------------

/// Raises `flag` and wakes the main thread; remembers which thread JACK notifies this client on.
void notified(Client* c, std::atomic<bool>& flag)
{
    uncancellable([&] {
        if (c->notifyThread.load(std::memory_order_relaxed) == 0)
            c->notifyThread.store(::gettid(), std::memory_order_relaxed);
        flag.store(true, std::memory_order_release);
        c->wake->raise();
    });
}

void onPortRegistration(jack_port_id_t, int, void* arg)
{
    auto* c = static_cast<Client*>(arg);
    notified(c, c->setupChanged);
}

void onClientRegistration(const char* name, int registered, void* arg)
{
    auto* c = static_cast<Client*>(arg);
    if (!registered) {
        uncancellable([&] {
            const std::string* awaited = c->awaitedGone.load(std::memory_order_acquire);
            if (awaited && *awaited == name)
                c->heardGone.store(true, std::memory_order_release);
        });
    }
    notified(c, c->setupChanged);
}

void onPortRename(jack_port_id_t, const char*, const char*, void* arg)
{
    auto* c = static_cast<Client*>(arg);
    notified(c, c->setupChanged);
}

void onPropertyChange(jack_uuid_t, const char*, jack_property_change_t, void* arg)
{
    auto* c = static_cast<Client*>(arg);
    notified(c, c->setupChanged);
}

// A client's activation reorders the graph; only then can a port it registered before be connected.
int onGraphOrder(void* arg)
{
    auto* c = static_cast<Client*>(arg);
    notified(c, c->graphChanged);
    return 0;
}

// Whose connection went is not worth finding out here: disconnections are rare, and the main
// thread looks at our own wiring once for any of them.
void onPortConnect(jack_port_id_t, jack_port_id_t, int connected, void* arg)
{
    auto* c = static_cast<Client*>(arg);
    if (!connected)
        notified(c, c->connectionGone);
}

// On the notification thread or on the process thread, whichever notices first; so it does not
// tell which thread notifies.
void onShutdown(void* arg)
{
    auto* c = static_cast<Client*>(arg);
    // Nothing may call into the client from here: the main thread stops using it and the
    // worker closes it.
    uncancellable([c] {
        c->serverGone.store(true, std::memory_order_release);
        c->wake->raise();
    });
}

/// Worker thread: waits, a bounded time, for a thread of this process to have ended.
void awaitThreadEnd(pid_t thread)
{
    if (thread == 0) {
        std::this_thread::sleep_for(kUnknownThreadGrace);
        return;
    }
    const QString task = QStringLiteral("/proc/self/task/%1").arg(thread);
    for (auto waited = std::chrono::milliseconds(0); waited < kThreadEndLimit && QFileInfo::exists(task);
         waited += kThreadEndLook)
        std::this_thread::sleep_for(kThreadEndLook);
}

/// Worker thread: closes one client, then waits, a bounded time, until each open sibling heard it go.
///
/// JACK's client library takes one lock of the whole process for every notification it hands a
/// client, before our callback runs. Closing a client cancels its notification thread wherever
/// it is, then takes that same lock: a thread cancelled while it held it (busy with the news that
/// a sibling closed just before went away) leaves the lock taken for good, and the close waits
/// forever. The server tells of a client's going last of everything its close brings, and our
/// callback runs once the lock is free again; so the next close waits for that. A server that
/// went sends nothing: its clients are closed without this (see serverGone).
void closeHeard(Client& closing, const std::vector<Client*>& siblings)
{
    std::vector<Client*> listening;
    for (Client* s : siblings) {
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
        return std::ranges::all_of(listening, [](Client* s) {
            return s->heardGone.load(std::memory_order_acquire) || s->serverGone.load(std::memory_order_acquire);
        });
    };
    for (auto waited = std::chrono::milliseconds(0); waited < kSiblingHearLimit && !allHeard(); waited += kSiblingHearLook)
        std::this_thread::sleep_for(kSiblingHearLook);
    for (Client* s : listening)
        s->awaitedGone.store(nullptr, std::memory_order_release);
}

/// Worker thread: closes every open client, one after another. One whose server went is closed
/// once its notification thread ended, as in JackMidiSystem::serverGone.
void closeInTurn(const std::vector<Client*>& clients)
{
    for (Client* c : clients) {
        if (!c->handle)
            continue;
        if (c->serverGone.load(std::memory_order_acquire)) {
            awaitThreadEnd(c->notifyThread.load(std::memory_order_relaxed));
            c->in = nullptr;
            c->out = nullptr;
            jack_client_close(std::exchange(c->handle, nullptr));
        } else {
            closeHeard(*c, clients);
        }
    }
}

/// Worker thread: opens one client with its ports and activates it; false when no server answers.
/// `opened`: its siblings opened before it, which hear of it if it must be closed again.
bool openOnWorker(Client& c, const std::vector<Client*>& opened)
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

    jack_set_process_callback(handle, onProcess, &c);
    jack_set_port_registration_callback(handle, onPortRegistration, &c);
    jack_set_client_registration_callback(handle, onClientRegistration, &c);
    jack_set_port_rename_callback(handle, onPortRename, &c);
    jack_set_property_change_callback(handle, onPropertyChange, &c);
    jack_set_graph_order_callback(handle, onGraphOrder, &c);
    jack_set_port_connect_callback(handle, onPortConnect, &c);
    jack_on_shutdown(handle, onShutdown, &c);
    if (c.wantsIn)
        c.in = jack_port_register(handle, c.inName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    if (c.wantsOut)
        c.out = jack_port_register(handle, c.outName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    if (jack_activate(handle) == 0)
        return true;
    closeHeard(c, opened);
    return true; // the server answered; this client alone failed
}

/// Main thread: whether calls may go to the client. A server gone is taken as gone from the
/// moment the shutdown callback ran, before the main thread has heard of it.
bool isUsable(const Client& c)
{
    return c.isLive && !c.serverGone.load(std::memory_order_acquire);
}

} // namespace

JackMidiSystem::JackMidiSystem(bool waitForStart, Scheduler& scheduler)
    : m_scheduler(scheduler)
    , m_started(!waitForStart)
    , m_openRetry(scheduler, [this] { requestOpen(); })
{
    // A missing server is the normal case here, not an error worth printing.
    jack_set_error_function(silent);
    jack_set_info_function(silent);
    // JACK's library sends its requests with plain write()s on the server's socket: a server that
    // goes away in the middle of one would otherwise end the whole process with SIGPIPE.
    std::signal(SIGPIPE, SIG_IGN);
    m_worker = std::make_unique<SerialWorker>();
    // The worker keeps the process's own priority: every thread JACK starts from it inherits its
    // nice value, and on a server without real-time scheduling that includes the process thread.
    m_watch = std::make_unique<JackServerWatch>([this] { requestOpen(); });
}

JackMidiSystem::~JackMidiSystem()
{
    m_watch.reset();
    // Every client still open, handed over or not (an open may be under way), is closed by the
    // worker after whatever it is doing. The task holds the clients, not this object, which may
    // be gone before it ends.
    std::vector<Client*> clients;
    for (auto& c : m_clients) {
        c->wiringRetry.reset(); // the scheduler's, main thread only
        clients.push_back(c.get());
    }
    auto closed = std::make_shared<std::promise<void>>();
    std::future<void> allClosed = closed->get_future();
    m_worker->post([clients, closed] {
        closeInTurn(clients);
        closed->set_value();
    });
    if (allClosed.wait_for(kExitCloseLimit) != std::future_status::ready) {
        // A close stuck inside JACK's library for good (a lock it left taken) must not keep the
        // app from ending, nor may anything a JACK thread can still touch be freed: the worker
        // and the clients (ring buffers, wake signals) are left as they are, on purpose, and the
        // process ends around them. Their wake signals no longer reach this object.
        for (auto& c : m_clients) {
            c->owner = nullptr;
            (void)c.release();
        }
        (void)m_worker.release();
        return;
    }
    // Joining the worker means no JACK thread outlives this object.
    m_worker.reset();
    for (auto& c : m_clients) {
        c->wake.reset();
        jack_ringbuffer_free(c->incoming);
        jack_ringbuffer_free(c->outgoing);
    }
}

bool JackMidiSystem::isOpen() const
{
    return openClient() != nullptr;
}

quint64 JackMidiSystem::droppedReports() const
{
    quint64 total = 0;
    for (const auto& c : m_clients)
        total += c->dropped.load(std::memory_order_relaxed);
    return total;
}

// --- Opening and closing (main thread; the blocking calls on the worker) ----------------------

void JackMidiSystem::start()
{
    m_started = true;
    requestOpen();
}

void JackMidiSystem::requestOpen()
{
    // Queued, so that every client created in the same turn of the main loop opens in one go.
    if (!m_started || m_openPosted)
        return;
    m_openPosted = true;
    QMetaObject::invokeMethod(&m_context, [this] { startOpen(); }, Qt::QueuedConnection);
}

void JackMidiSystem::startOpen()
{
    m_openPosted = false;
    if (m_opening)
        return; // handOver looks again for clients that were left out
    std::vector<Client*> closed;
    for (auto& c : m_clients) {
        if (!c->isLive)
            closed.push_back(c.get());
    }
    if (closed.empty())
        return;
    m_opening = true;
    m_worker->post([this, closed] {
        std::vector<Client*> opened;
        bool answered = false;
        for (Client* c : closed) {
            if (!openOnWorker(*c, opened))
                break; // no server: one failed attempt is enough for this round
            answered = true;
            if (c->handle)
                opened.push_back(c);
        }
        QMetaObject::invokeMethod(
            &m_context, [this, closed, opened, answered] { handOver(closed, opened, answered); }, Qt::QueuedConnection);
    });
}

void JackMidiSystem::handOver(const std::vector<Client*>& tried, const std::vector<Client*>& opened, bool answered)
{
    m_opening = false;
    // A server that answered but refused a client (its activation timed out while the server was
    // busy clearing a killed client) is asked again shortly; with no server there is nothing to ask.
    const bool refused = answered && opened.size() < tried.size();
    if (refused)
        m_openRetry.failed();
    else
        m_openRetry.succeeded();
    bool gone = false;
    for (Client* c : opened) {
        c->isLive = true;
        gone = gone || c->serverGone.load(std::memory_order_acquire);
    }
    if (gone) {
        serverGone(); // died while we were opening
        return;
    }
    // A client created while the worker was busy has not been tried yet.
    const bool untried = std::ranges::any_of(m_clients, [&](const auto& c) {
        return !c->isLive && std::ranges::find(tried, c.get()) == tried.end();
    });
    if (untried && !opened.empty())
        requestOpen();
    for (Client* c : opened) {
        if (c->notify)
            c->notify(kMidiSetupChanged);
    }
}

void JackMidiSystem::serverGone()
{
    // No call reaches these clients from here on but their closing, on the worker.
    std::vector<std::pair<jack_client_t*, pid_t>> handles;
    std::vector<Client*> lost;
    for (auto& c : m_clients) {
        if (!c->isLive)
            continue;
        c->isLive = false;
        c->in = nullptr;
        c->out = nullptr;
        c->pendingAttach.clear();
        c->pendingDetach.clear();
        c->wiringRetry->succeeded(); // nothing left to wire
        handles.emplace_back(std::exchange(c->handle, nullptr), c->notifyThread.load(std::memory_order_relaxed));
        lost.push_back(c.get());
    }
    m_worker->post([handles] {
        // JACK's notification thread leaves through its error reporting (strerror, which takes a
        // C library lock the first time); cancelled there by the closing, it would keep the lock
        // for good, and the next error reported (our next open, with the server still down) would
        // wait forever. So each is closed once that thread has ended.
        for (const auto& [handle, notifyThread] : handles) {
            awaitThreadEnd(notifyThread);
            jack_client_close(handle);
        }
    });
    for (Client* c : lost) {
        if (c->notify)
            c->notify(kMidiSetupChanged);
    }
    // Perhaps only our clients were thrown out and the server still runs: one attempt, after the
    // closing above. A stopped server makes it fail at once; its return is seen by the watch.
    requestOpen();
}

void JackMidiSystem::openPorts(Client& c)
{
    if (!c.isLive)
        return; // the worker registers them when it opens the client
    if (c.wantsIn && !c.in)
        c.in = jack_port_register(c.handle, c.inName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    if (c.wantsOut && !c.out)
        c.out = jack_port_register(c.handle, c.outName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
}

MidiClientRef JackMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    auto c = std::make_unique<Client>();
    c->name = name;
    c->notify = std::move(notify);
    c->incoming = jack_ringbuffer_create(kIncomingWords * kWordSize);
    c->outgoing = jack_ringbuffer_create(kOutgoingWords * sizeof(OutgoingMessage));
    // Locked in memory so the real-time thread never waits on a page fault.
    jack_ringbuffer_mlock(c->incoming);
    jack_ringbuffer_mlock(c->outgoing);
    Client* raw = c.get();
    c->owner = this;
    c->wake = std::make_unique<MainThreadSignal>([raw] {
        if (raw->owner)
            raw->owner->onWake(*raw);
    });
    c->wiringRetry = std::make_unique<RetryBackoff>(m_scheduler, [this, raw] { retryWiring(*raw); });
    m_clients.push_back(std::move(c));
    requestOpen();
    return MidiClientRef(m_clients.size());
}

MidiPortRef JackMidiSystem::createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive)
{
    if (client == 0 || client > m_clients.size())
        return 0;
    Client& c = *m_clients[client - 1];
    c.wantsIn = true;
    c.inName = name;
    c.receive = std::move(receive);
    openPorts(c);
    m_ports[m_nextPort] = {client, true};
    return m_nextPort++;
}

MidiPortRef JackMidiSystem::createOutputPort(MidiClientRef client, const QString& name)
{
    if (client == 0 || client > m_clients.size())
        return 0;
    Client& c = *m_clients[client - 1];
    c.wantsOut = true;
    c.outName = name;
    openPorts(c);
    m_ports[m_nextPort] = {client, false};
    return m_nextPort++;
}

JackMidiSystem::Client* JackMidiSystem::openClient() const
{
    const auto it = std::ranges::find_if(m_clients, [](const auto& c) { return isUsable(*c); });
    return it == m_clients.end() ? nullptr : it->get();
}

JackMidiSystem::Client* JackMidiSystem::clientOf(MidiPortRef port, bool isInput) const
{
    const auto it = m_ports.find(port);
    if (it == m_ports.end() || it->second.isInput != isInput)
        return nullptr;
    Client* c = m_clients[it->second.client - 1].get();
    return isUsable(*c) ? c : nullptr;
}

// --- Main thread, woken by the process or notification callbacks ------------------------------

void JackMidiSystem::onWake(Client& c)
{
    // A client being opened, or already given up, is not ours to look at; the hand-over announces
    // the setup anyway.
    if (!c.isLive)
        return;
    if (c.serverGone.load(std::memory_order_acquire)) {
        serverGone();
        return;
    }
    bool changed = c.setupChanged.exchange(false, std::memory_order_acq_rel);
    const bool graphChanged = c.graphChanged.exchange(false, std::memory_order_acq_rel);
    const bool connectionGone = c.connectionGone.exchange(false, std::memory_order_acq_rel);
    if (graphChanged || connectionGone || changed)
        retryAttach(c);
    // A destination that could not be wired before (its client not yet active) now can: the
    // engine hears of it as a setup change, and only then takes the unit as present. A wired Out
    // is looked at again only when a connection went: looking is itself a graph change (see
    // wireOut), so doing it on every graph change would never end. A setup change has the
    // engine rescan, which looks anyway.
    const bool wasWired = c.outWired;
    if (((graphChanged && !wasWired) || connectionGone) && wireOut(c) && !wasWired && !c.outWanted.isEmpty())
        changed = true;

    c.words.clear();
    while (jack_ringbuffer_read_space(c.incoming) >= kWordSize) {
        quint32 word = 0;
        jack_ringbuffer_read(c.incoming, reinterpret_cast<char*>(&word), kWordSize);
        c.words.push_back(word);
    }
    if (!c.words.empty() && c.receive)
        c.receive(c.words);
    if (changed && c.notify)
        c.notify(kMidiSetupChanged);
}

bool JackMidiSystem::attach(Client& c, const QString& source)
{
    const int result = jack_connect(c.handle, source.toUtf8().constData(), jack_port_name(c.in));
    return result == 0 || result == EEXIST;
}

void JackMidiSystem::retryAttach(Client& c)
{
    if (!c.in)
        return;
    std::erase_if(c.pendingAttach, [&](const QString& source) {
        return !jack_port_by_name(c.handle, source.toUtf8().constData()) || attach(c, source);
    });
}

void JackMidiSystem::retryWiring(Client& c)
{
    if (!isUsable(c))
        return; // a client opened again announces itself
    retryAttach(c);
    const bool outMissing = !c.outWanted.isEmpty() && !c.outWired
        && jack_port_by_name(c.handle, c.outWanted.toUtf8().constData());
    bool done = c.pendingAttach.empty();
    if (outMissing) {
        // The engine takes the unit as present only once our Out reaches it: tell it.
        if (wireOut(c) && c.notify)
            c.notify(kMidiSetupChanged);
        done = done && c.outWired;
    }
    // Done, or the unit went: either way nothing is left to try.
    if (done)
        c.wiringRetry->succeeded();
    else
        c.wiringRetry->failed();
}

// --- Enumeration ------------------------------------------------------------------------------

MidiEndpointRef JackMidiSystem::refFor(const QString& fullName)
{
    const auto it = m_refByName.find(fullName);
    if (it != m_refByName.end())
        return it->second;
    m_nameByRef.push_back(fullName);
    const auto ref = MidiEndpointRef(m_nameByRef.size());
    m_refByName.emplace(fullName, ref);
    return ref;
}

QString JackMidiSystem::nameOf(MidiEndpointRef ref) const
{
    return ref >= 1 && ref <= m_nameByRef.size() ? m_nameByRef[ref - 1] : QString();
}

void JackMidiSystem::snapshot(bool sources)
{
    auto& list = sources ? m_sources : m_destinations;
    list.clear();
    Client* c = openClient();
    if (!c) {
        // A rescan is also where a server that is not watched for (another socket folder, or a
        // server that stayed up while only our clients were refused) gets tried again.
        requestOpen();
        return;
    }
    // A unit's source sends to us: its port is an output; its destination is an input.
    const char** names = jack_get_ports(c->handle, nullptr, JACK_DEFAULT_MIDI_TYPE,
                                        sources ? JackPortIsOutput : JackPortIsInput);
    if (!names)
        return;
    for (const char** n = names; *n; ++n) {
        const QString name = QString::fromUtf8(*n);
        if (!name.startsWith(ownClientPrefix()))
            list.push_back(refFor(name));
    }
    jack_free(names);
}

int JackMidiSystem::sourceCount() const
{
    // Enumeration is where a server that was absent gets looked for again.
    const_cast<JackMidiSystem*>(this)->snapshot(true);
    return int(m_sources.size());
}

MidiEndpointRef JackMidiSystem::source(int index) const
{
    return index >= 0 && index < int(m_sources.size()) ? m_sources[std::size_t(index)] : 0;
}

int JackMidiSystem::destinationCount() const
{
    const_cast<JackMidiSystem*>(this)->snapshot(false);
    return int(m_destinations.size());
}

MidiEndpointRef JackMidiSystem::destination(int index) const
{
    return index >= 0 && index < int(m_destinations.size()) ? m_destinations[std::size_t(index)] : 0;
}

std::optional<QString> JackMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    Client* c = openClient();
    const QString name = nameOf(endpoint);
    if (!c || name.isEmpty())
        return std::nullopt;
    jack_port_t* port = jack_port_by_name(c->handle, name.toUtf8().constData());
    if (!port)
        return std::nullopt;

    char* value = nullptr;
    char* type = nullptr;
    if (jack_get_property(jack_port_uuid(port), JACK_METADATA_PRETTY_NAME, &value, &type) == 0 && value) {
        const QString pretty = QString::fromUtf8(value);
        jack_free(value);
        jack_free(type);
        return pretty;
    }
    return QString::fromUtf8(jack_port_short_name(port));
}

// --- Connections and sending ------------------------------------------------------------------

void JackMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    Client* c = clientOf(inPort, true);
    const QString name = nameOf(source);
    if (!c || !c->in || name.isEmpty())
        return;
    c->pendingDetach.erase(name); // a rescan that finds the same source again: the link never went down
    // A client that registered its ports before activating refuses connections until it is
    // active; the attach is then retried on the next graph change.
    if (attach(*c, name)) {
        c->pendingAttach.erase(name);
    } else {
        c->pendingAttach.insert(name);
        c->wiringRetry->failed();
    }
}

void JackMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    Client* c = clientOf(inPort, true);
    const QString name = nameOf(source);
    if (!c || !c->in || name.isEmpty())
        return;
    c->pendingAttach.erase(name);
    // The engine detaches its source and attaches it again on every rescan. Done at once, JACK
    // would run a cycle or more without the connection and a unit that stays would lose every
    // report it sent meanwhile; so the detach waits for the rescan to end, and an attach of the
    // same source before then cancels it.
    c->pendingDetach.insert(name);
    if (std::exchange(m_detachPosted, true))
        return;
    QMetaObject::invokeMethod(&m_context, [this] { flushDetaches(); }, Qt::QueuedConnection);
}

void JackMidiSystem::flushDetaches()
{
    m_detachPosted = false;
    for (auto& c : m_clients) {
        const std::set<QString> names = std::exchange(c->pendingDetach, {});
        if (!isUsable(*c) || !c->in)
            continue;
        for (const QString& name : names)
            jack_disconnect(c->handle, name.toUtf8().constData(), jack_port_name(c->in));
    }
}

bool JackMidiSystem::connectDestination(MidiPortRef outPort, MidiEndpointRef destination)
{
    Client* c = clientOf(outPort, false);
    const QString name = nameOf(destination);
    if (!c || name.isEmpty())
        return false;
    if (aimOut(*c, name))
        return true;
    c->wiringRetry->failed();
    return false;
}

bool JackMidiSystem::aimOut(Client& c, const QString& destination)
{
    // Only one destination at a time: the previous one, if we wired it, goes.
    if (c.outWanted != destination && !c.outWanted.isEmpty() && c.out)
        jack_disconnect(c.handle, jack_port_name(c.out), c.outWanted.toUtf8().constData());
    c.outWanted = destination;
    return wireOut(c);
}

bool JackMidiSystem::wireOut(Client& c)
{
    c.outWired = false;
    jack_port_t* out = c.out;
    if (c.outWanted.isEmpty() || !out)
        return false;
    const QByteArray target = c.outWanted.toUtf8();
    if (!jack_port_by_name(c.handle, target.constData()))
        return false;
    // The wiring JACK reports, not the one we remember: a unit that went and came back under the
    // same name has a new port, and JACK dropped our connection with the old one. JACK is asked
    // by connecting, which it answers at once, EEXIST when the connection stands (and which it
    // counts as a graph change all the same). Its own questions about connections sleep a whole
    // cycle whenever any graph change is pending, which the main loop must not do in the middle
    // of a flood of reports.
    // A unit whose client is not active yet refuses; the next graph change tries again.
    const int result = jack_connect(c.handle, jack_port_name(out), target.constData());
    return c.outWired = result == 0 || result == EEXIST;
}

void JackMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    Client* c = clientOf(outPort, false);
    const QString name = nameOf(destination);
    if (!c || !c->out || name.isEmpty())
        return;
    if (!jack_port_by_name(c->handle, name.toUtf8().constData()))
        return; // the unit went away: dropped, never queued for a later unit
    // Wired when the unit was found, and looked at again whenever a connection goes; one that
    // went and is not yet looked at (the unit left and came back) is looked at here, before the
    // message is queued.
    if (c->outWanted != name || !c->outWired || c->connectionGone.load(std::memory_order_acquire))
        aimOut(*c, name);
    const OutgoingMessage message{word, jack_frame_time(c->handle) + kConnectionCycles * jack_get_buffer_size(c->handle)};
    if (jack_ringbuffer_write_space(c->outgoing) >= sizeof message)
        jack_ringbuffer_write(c->outgoing, reinterpret_cast<const char*>(&message), sizeof message);
}

} // namespace orvan
