#pragma once

#include "../../time/SystemClock.h"
#include "../MidiSystem.h"
#include "RetryBackoff.h"

#include <QObject>
#include <map>
#include <memory>
#include <vector>

namespace orvan {

class JackServerWatch;
class SerialWorker;

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
/// rescan with no server open also tries once.
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
/// The engine detaches and attaches its source again on every rescan; detaching waits for the
/// rescan to end, so a unit that stays never loses its connection. No call on the main thread
/// waits for JACK's next cycle (JACK's questions about connections do while a graph change is
/// pending): whether our Out is wired is asked by connecting, and only when it may have changed.
///
/// Display name of a port: its JACK_METADATA_PRETTY_NAME when set, else its short name.
class JackMidiSystem final : public MidiSystem {
public:
    /// With `waitForStart`, nothing opens before start(): opening clients makes the server and its
    /// real-time threads busy, which a window drawing its first frame on a small machine feels.
    explicit JackMidiSystem(bool waitForStart = false, Scheduler& scheduler = SystemClock::shared());
    ~JackMidiSystem() override;

    /// Whether any client is open on a server and in use by the main thread.
    bool isOpen() const;
    /// Incoming reports dropped because the main thread fell a whole ring buffer behind.
    quint64 droppedReports() const;

    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) override;
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) override;
    int sourceCount() const override;
    MidiEndpointRef source(int index) const override;
    int destinationCount() const override;
    MidiEndpointRef destination(int index) const override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    bool connectDestination(MidiPortRef outPort, MidiEndpointRef destination) override;
    void start() override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

    struct Client; // public for the C callbacks only

private:
    struct PortRef {
        MidiClientRef client;
        bool isInput;
    };

    void requestOpen();
    void startOpen();
    void handOver(const std::vector<Client*>& tried, const std::vector<Client*>& opened, bool answered);
    void serverGone();
    void openPorts(Client& client);
    void onWake(Client& client);
    bool attach(Client& client, const QString& source);
    void retryAttach(Client& client);
    void retryWiring(Client& client);
    void flushDetaches();
    bool aimOut(Client& client, const QString& destination);
    bool wireOut(Client& client);
    void snapshot(bool sources);
    Client* openClient() const;
    Client* clientOf(MidiPortRef port, bool isInput) const;
    MidiEndpointRef refFor(const QString& fullName);
    QString nameOf(MidiEndpointRef ref) const;

    std::vector<std::unique_ptr<Client>> m_clients; // ref = index + 1
    std::map<MidiPortRef, PortRef> m_ports;
    MidiPortRef m_nextPort = 1;
    Scheduler& m_scheduler;
    bool m_started;
    bool m_openPosted = false; // a start of opening is queued on the main loop
    bool m_opening = false;    // the worker is opening clients
    bool m_detachPosted = false; // a flush of deferred detaches is queued on the main loop

    // Endpoints are known by full port name ("client:port"); a ref stays bound to one name.
    std::map<QString, MidiEndpointRef> m_refByName;
    std::vector<QString> m_nameByRef; // ref = index + 1
    std::vector<MidiEndpointRef> m_sources;
    std::vector<MidiEndpointRef> m_destinations;

    QObject m_context; // tasks posted to the main thread die with this object
    RetryBackoff m_openRetry;
    std::unique_ptr<JackServerWatch> m_watch;
    std::unique_ptr<SerialWorker> m_worker; // last: joined first, while the clients still exist
};

} // namespace orvan
