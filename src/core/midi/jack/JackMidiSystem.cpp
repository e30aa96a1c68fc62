#include "JackMidiSystem.h"

#include "JackClient.h"
#include "JackClientOpener.h"
#include "JackPortListing.h"
#include "JackServerWatch.h"
#include "JackWiring.h"
#include "SerialWorker.h"

#include <algorithm>
#include <csignal>

namespace orvan {

namespace {

// Cycles after which a connection just made is surely in the graph the process callback runs in.
constexpr jack_nframes_t kConnectionCycles = 2;
// How long the end waits for the worker to close every client (see ~JackMidiSystem).
constexpr auto kExitCloseLimit = std::chrono::seconds(3);

void silent(const char*) {}

/// Main thread: whether calls may go to the client. A server gone is taken as gone from the
/// moment the shutdown callback ran, before the main thread has heard of it.
bool isUsable(const JackClient& c)
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
    // worker after whatever it is doing.
    std::vector<JackClient*> clients;
    for (auto& c : m_table.clients()) {
        c->wiringRetry.reset(); // the scheduler's, main thread only
        clients.push_back(c.get());
    }
    if (!JackClientOpener::closeAllWithin(*m_worker, clients, kExitCloseLimit)) {
        // A close stuck inside JACK's library for good (a lock it left taken) must not keep the
        // app from ending, nor may anything a JACK thread can still touch be freed: the worker
        // and the clients (ring buffers, wake signals) are left as they are, on purpose, and the
        // process ends around them. Their wake signals no longer reach this object.
        for (auto& c : m_table.clients()) {
            c->owner = nullptr;
            (void)c.release();
        }
        (void)m_worker.release();
        return;
    }
    // Joined: no JACK thread outlives this object, and the clients go with the table.
    m_worker.reset();
}

bool JackMidiSystem::isOpen() const
{
    return anyOpenClient() != nullptr;
}

quint64 JackMidiSystem::droppedReports() const
{
    quint64 total = 0;
    for (const auto& c : m_table.clients())
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
    std::vector<JackClient*> closed;
    std::vector<JackClient*> live; // closed on the worker only after this round: safe to look at there
    for (auto& c : m_table.clients())
        (c->isLive ? live : closed).push_back(c.get());
    if (closed.empty())
        return;
    m_opening = true;
    m_worker->post([this, closed, live] {
        const JackClientOpener::OpenRound round = JackClientOpener::openInTurn(closed, live);
        QMetaObject::invokeMethod(
            &m_context, [this, closed, round] { handOver(closed, round.opened, round.answered); }, Qt::QueuedConnection);
    });
}

void JackMidiSystem::handOver(const std::vector<JackClient*>& tried, const std::vector<JackClient*>& opened, bool answered)
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
    for (JackClient* c : opened) {
        c->isLive = true;
        gone = gone || c->serverGone.load(std::memory_order_acquire);
    }
    if (gone) {
        serverGone(); // died while we were opening
        return;
    }
    // A client created while the worker was busy has not been tried yet.
    const bool untried = std::ranges::any_of(m_table.clients(), [&](const auto& c) {
        return !c->isLive && std::ranges::find(tried, c.get()) == tried.end();
    });
    if (untried && !opened.empty())
        requestOpen();
    for (JackClient* c : opened) {
        if (c->notify)
            c->notify(kMidiSetupChanged);
    }
}

void JackMidiSystem::serverGone()
{
    // No call reaches these clients from here on but their closing, on the worker.
    std::vector<std::pair<jack_client_t*, pid_t>> handles;
    std::vector<JackClient*> lost;
    for (auto& c : m_table.clients()) {
        if (!c->isLive)
            continue;
        c->isLive = false;
        c->in = nullptr;
        c->out = nullptr;
        c->pendingAttach.clear();
        c->wiringRetry->succeeded(); // nothing left to wire
        handles.emplace_back(std::exchange(c->handle, nullptr), c->notifyThread.load(std::memory_order_relaxed));
        lost.push_back(c.get());
    }
    m_worker->post([handles] { JackClientOpener::closeAfterServerGone(handles); });
    for (JackClient* c : lost) {
        if (c->notify)
            c->notify(kMidiSetupChanged);
    }
    // Perhaps only our clients were thrown out and the server still runs: one attempt, after the
    // closing above. A stopped server makes it fail at once; its return is seen by the watch.
    requestOpen();
}

MidiClientRef JackMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    auto c = std::make_unique<JackClient>(name, std::move(notify));
    JackClient* raw = c.get();
    c->owner = this;
    c->wake = std::make_unique<MainThreadSignal>([raw] {
        if (raw->owner)
            raw->owner->onWake(*raw);
    });
    c->wiringRetry = std::make_unique<RetryBackoff>(m_scheduler, [this, raw] { retryWiring(*raw); });
    const MidiClientRef ref = m_table.addClient(std::move(c));
    requestOpen();
    return ref;
}

void JackMidiSystem::openPorts(JackClient& c)
{
    // Not yet live: the worker registers them when it opens the client.
    if (c.isLive)
        c.registerPorts();
}

JackClient* JackMidiSystem::anyOpenClient() const
{
    const auto it = std::ranges::find_if(m_table.clients(), [](const auto& c) { return isUsable(*c); });
    return it == m_table.clients().end() ? nullptr : it->get();
}

JackClient* JackMidiSystem::clientOf(MidiPortRef port, bool isInput) const
{
    JackClient* c = m_table.clientOf(port, isInput);
    return c && isUsable(*c) ? c : nullptr;
}

// --- Main thread, woken by the process or notification callbacks ------------------------------

void JackMidiSystem::onWake(JackClient& c)
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
        JackWiring::retryAttach(c);
    // A destination that could not be wired before (its client not yet active) now can: the
    // engine hears of it as a setup change, and only then takes the unit as present. A wired Out
    // is looked at again only when a connection went: looking is itself a graph change (see
    // wireOut), so doing it on every graph change would never end. A setup change has the
    // engine rescan, which looks anyway.
    const bool wasWired = c.outWired;
    if (((graphChanged && !wasWired) || connectionGone) && JackWiring::wireOut(c) && !wasWired && !c.outWanted.isEmpty())
        changed = true;

    c.takeIncoming();
    if (!c.words.empty() && c.receive)
        c.receive(c.words);
    if (changed && c.notify)
        c.notify(kMidiSetupChanged);
}

void JackMidiSystem::retryWiring(JackClient& c)
{
    if (!isUsable(c))
        return; // a client opened again announces itself
    JackWiring::retryAttach(c);
    const bool outMissing = !c.outWanted.isEmpty() && !c.outWired
        && jack_port_by_name(c.handle, c.outWanted.toUtf8().constData());
    bool done = c.pendingAttach.empty();
    if (outMissing) {
        // The engine takes the unit as present only once our Out reaches it: tell it.
        if (JackWiring::wireOut(c) && c.notify)
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

QString JackMidiSystem::nameOf(MidiEndpointRef ref) const
{
    return m_refs.keyOf(ref).value_or(QString());
}

void JackMidiSystem::refresh()
{
    m_sources.clear();
    m_destinations.clear();
    JackClient* c = anyOpenClient();
    if (!c) {
        // Also where a server that is not watched for (another socket folder, or a server that
        // stayed up while only our clients were refused) gets tried again.
        requestOpen();
        return;
    }
    for (const QString& name : JackPortListing::portNames(c->handle, true))
        m_sources.push_back(m_refs.refFor(name));
    for (const QString& name : JackPortListing::portNames(c->handle, false))
        m_destinations.push_back(m_refs.refFor(name));
}

std::optional<QString> JackMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    JackClient* c = anyOpenClient();
    const QString name = nameOf(endpoint);
    if (!c || name.isEmpty())
        return std::nullopt;
    return JackPortListing::displayName(c->handle, name);
}

// --- Connections and sending ------------------------------------------------------------------

void JackMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    JackClient* c = clientOf(inPort, true);
    const QString name = nameOf(source);
    if (!c || !c->in || name.isEmpty())
        return;
    // A client that registered its ports before activating refuses connections until it is
    // active; the attach is then retried on the next graph change.
    if (JackWiring::attach(*c, name)) {
        c->pendingAttach.erase(name);
    } else {
        c->pendingAttach.insert(name);
        c->wiringRetry->failed();
    }
}

void JackMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    JackClient* c = clientOf(inPort, true);
    const QString name = nameOf(source);
    if (!c || !c->in || name.isEmpty())
        return;
    c->pendingAttach.erase(name);
    jack_disconnect(c->handle, name.toUtf8().constData(), jack_port_name(c->in));
}

bool JackMidiSystem::connectDestination(MidiPortRef outPort, MidiEndpointRef destination)
{
    JackClient* c = clientOf(outPort, false);
    const QString name = nameOf(destination);
    if (!c || name.isEmpty())
        return false;
    if (JackWiring::aimOut(*c, name))
        return true;
    c->wiringRetry->failed();
    return false;
}

void JackMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    JackClient* c = clientOf(outPort, false);
    const QString name = nameOf(destination);
    if (!c || !c->out || name.isEmpty())
        return;
    if (!jack_port_by_name(c->handle, name.toUtf8().constData()))
        return; // the unit went away: dropped, never queued for a later unit
    // Wired when the unit was found, and looked at again whenever a connection goes; one that
    // went and is not yet looked at (the unit left and came back) is looked at here, before the
    // message is queued.
    if (c->outWanted != name || !c->outWired || c->connectionGone.load(std::memory_order_acquire))
        JackWiring::aimOut(*c, name);
    c->queueOutgoing({word, jack_frame_time(c->handle) + kConnectionCycles * jack_get_buffer_size(c->handle)});
}

} // namespace orvan
