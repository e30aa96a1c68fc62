#pragma once

#include "../../time/SystemClock.h"
#include "../MidiEndpointRefs.h"
#include "../MidiPortTable.h"
#include "JackClient.h"
#include "RetryBackoff.h"

#include <QObject>
#include <memory>
#include <vector>

namespace orvan {

class JackServerWatch;
class SerialWorker;

/// JACK behind the MIDI system seam. Never starts a server (JackNoStartServer).
///
/// Every client is its own JACK client with MIDI ports "In" and "Out"; its real-time callback only
/// moves words through lock-free ring buffers, and everything else reaches the main thread as a
/// wake-up. Clients open and close on a worker thread, since JACK may block for seconds; a server
/// that goes takes every client, and one that starts later is found by a JackServerWatch. Wirings
/// and openings JACK refuses for a moment are tried again by a RetryBackoff. docs/ARCHITECTURE.md
/// ("Threads") says why each of these is so.
///
/// A detach is done at once: CombinedMidiSystem holds a rescan's detaches back. Display name of a
/// port: its JACK_METADATA_PRETTY_NAME when set, else its short name.
class JackMidiSystem final : public PortTableMidiSystem<JackClient> {
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
    void refresh() override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    bool connectDestination(MidiPortRef outPort, MidiEndpointRef destination) override;
    void start() override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    void openPorts(JackClient& client) override;
    void requestOpen();
    void startOpen();
    void handOver(const std::vector<JackClient*>& tried, const std::vector<JackClient*>& opened, bool answered);
    void serverGone();
    void onWake(JackClient& client);
    void retryWiring(JackClient& client);
    JackClient* anyOpenClient() const;
    JackClient* clientOf(MidiPortRef port, bool isInput) const;
    QString nameOf(MidiEndpointRef ref) const;

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
