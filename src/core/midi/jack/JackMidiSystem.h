#pragma once

#include "../../time/SystemClock.h"
#include "../MidiEndpointRefs.h"
#include "../MidiPortTable.h"
#include "../ListingMidiSystem.h"
#include "RetryBackoff.h"

#include <QObject>
#include <memory>
#include <vector>

namespace orvan {

class JackServerWatch;
class SerialWorker;
struct JackClient;

/// JACK behind the MIDI system seam. Never starts a server (JackNoStartServer).
///
/// Every client is its own JACK client with MIDI ports "In" and "Out". Its process callback, on
/// JACK's real-time thread, only moves plain words through two lock-free ring buffers and raises
/// a MainThreadSignal: no lock, no allocation, no engine state. Outgoing words are written in the
/// next cycle, in order; incoming Control Changes are handed to the receive callback on the main
/// thread. Port registration, port rename, pretty-name changes and client registration become
/// setup-changed notifications, also on the main thread.
///
/// Opening and closing clients may block for seconds (a server still waiting on a killed client),
/// so both happen on a worker thread; the main thread never waits for the server. Clients are
/// opened together, and only handed to the main thread once open; each then gets a setup-changed
/// notification, the same path as hot-plug. A server that goes away (its clients' shutdown
/// callbacks only set a flag) takes all clients with it: the main thread stops using them at once
/// and the worker closes them, before any new client opens (JACK's client library keeps one set
/// of per-server globals, rebuilt only once every client of the old server is closed). A server
/// that starts later or again is noticed by a JackServerWatch and opened with no user action; a
/// refresh() with no server open also tries once.
///
/// A wiring that JACK refuses (a client not yet active, a server busy clearing a killed client) is
/// tried again on the next graph change and, in case none comes, by a RetryBackoff; so is a
/// client that failed to open while the server answered.
///
/// JACK ends a client's threads with asynchronous cancellation when the client closes, at
/// whatever instruction they are. So every callback runs with cancellation held off, and a client
/// whose server went is closed only once its notification thread has ended by itself: cancelled
/// on its way out through JACK's error reporting, it would leave a C library lock taken for good.
///
/// A detach is done at once: the app reaches this system through CombinedMidiSystem, which holds
/// a rescan's detaches back until the rescan is over. No call on the main thread waits for
/// JACK's next cycle (see JackWiring): whether our Out is wired is asked by connecting, and only
/// when it may have changed.
///
/// Closing at the end happens in turn, each client once its siblings heard the previous one go,
/// and waits at most a few seconds (see the destructor).
///
/// Display name of a port: its JACK_METADATA_PRETTY_NAME when set, else its short name.
class JackMidiSystem final : public ListingMidiSystem {
public:
    /// With `waitForStart`, nothing opens before start(): opening clients makes the server and its
    /// real-time threads busy, which a window drawing its first frame on a small machine feels.
    explicit JackMidiSystem(bool waitForStart = false, Scheduler& scheduler = SystemClock::shared());
    ~JackMidiSystem() override;

    /// Whether any client is open on a server and in use by the main thread.
    bool isOpen() const;
    /// Reports lost because the main thread fell a whole ring buffer behind (the flood bench's count).
    quint64 droppedReports() const;

    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) override;
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) override;
    void refresh() override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    bool connectDestination(MidiPortRef outPort, MidiEndpointRef destination) override;
    void start() override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    void requestOpen();
    void startOpen();
    void handOver(const std::vector<JackClient*>& tried, const std::vector<JackClient*>& opened, bool answered);
    void serverGone();
    void onWake(JackClient& client);
    void retryWiring(JackClient& client);
    JackClient* anyOpenClient() const;
    JackClient* clientOf(MidiPortRef port, bool isInput) const;
    QString nameOf(MidiEndpointRef ref) const;

    MidiPortTable<JackClient> m_table;
    Scheduler& m_scheduler;
    bool m_started;
    bool m_openPosted = false; // a start of opening is queued on the main loop
    bool m_opening = false;    // the worker is opening clients

    // Endpoints are known by full port name ("client:port"); a ref stays bound to one name.
    MidiEndpointRefs<QString> m_refs;

    QObject m_context; // tasks posted to the main thread die with this object
    RetryBackoff m_openRetry;
    std::unique_ptr<JackServerWatch> m_watch;
    std::unique_ptr<SerialWorker> m_worker; // last: joined first, while the clients still exist
};

} // namespace orvan
