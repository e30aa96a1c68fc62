#pragma once

#include "../MidiSystem.h"

#include <map>
#include <memory>
#include <vector>

namespace orvan {

/// JACK behind the MIDI system seam. Never starts a server (JackNoStartServer).
///
/// Every client is its own JACK client with MIDI ports "In" and "Out". Its process callback, on
/// JACK's real-time thread, only moves plain words through two lock-free ring buffers and raises
/// a MainThreadSignal: no lock, no allocation, no engine state. Outgoing words are written in the
/// next cycle, in order; incoming Control Changes are handed to the receive callback on the main
/// thread. Port registration, port rename, pretty-name changes, client registration and server
/// shutdown become setup-changed notifications, also on the main thread.
///
/// A client asked for while no server runs (or after its server went away) is remembered and
/// opened by the next enumeration that finds a server; until then that costs one failed connect
/// to the server's socket.
///
/// Display name of a port: its JACK_METADATA_PRETTY_NAME when set, else its short name.
class JackMidiSystem final : public MidiSystem {
public:
    JackMidiSystem();
    ~JackMidiSystem() override;

    /// Whether any client is open on a server.
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
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

    struct Client; // public for the C callbacks only

private:
    struct PortRef {
        MidiClientRef client;
        bool isInput;
    };

    void openMissing();
    void open(Client& client);
    void openPorts(Client& client);
    void close(Client& client);
    void onWake(Client& client);
    bool attach(Client& client, const QString& source);
    void retryAttach(Client& client);
    void snapshot(bool sources);
    Client* openClient() const;
    Client* clientOf(MidiPortRef port, bool isInput) const;
    MidiEndpointRef refFor(const QString& fullName);
    QString nameOf(MidiEndpointRef ref) const;

    std::vector<std::unique_ptr<Client>> m_clients; // ref = index + 1
    std::map<MidiPortRef, PortRef> m_ports;
    MidiPortRef m_nextPort = 1;

    // Endpoints are known by full port name ("client:port"); a ref stays bound to one name.
    std::map<QString, MidiEndpointRef> m_refByName;
    std::vector<QString> m_nameByRef; // ref = index + 1
    std::vector<MidiEndpointRef> m_sources;
    std::vector<MidiEndpointRef> m_destinations;
};

} // namespace orvan
