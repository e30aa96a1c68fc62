#pragma once

#include "../MidiSystem.h"
#include "AlsaPortListing.h"

#include <map>
#include <memory>
#include <vector>

namespace orvan {

/// The ALSA sequencer behind the MIDI system seam.
///
/// Every client is its own sequencer client with ports "In" and "Out". Hot-plug comes from the
/// System Announce port, subscribed to "In": each client or port start, exit or change read in
/// one pass becomes one setup-changed notification. The sequencer's poll descriptors are watched
/// by QSocketNotifiers, so everything, callbacks included, runs on the main thread; no thread,
/// no timer. The kernel hands our clients Control Changes and setup changes only, and the ALSA
/// library's error messages go nowhere.
///
/// A client asked for while the sequencer is missing (no /dev/snd/seq) is remembered and opened by
/// the next enumeration that finds the sequencer there; until then it costs one stat().
class AlsaMidiSystem final : public MidiSystem {
public:
    AlsaMidiSystem();
    ~AlsaMidiSystem() override;

    /// Whether any client is open on the sequencer.
    bool isOpen() const;

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

private:
    struct Client;
    struct PortRef {
        MidiClientRef client;
        bool isInput;
    };

    void openMissing();
    void open(Client& client);
    void openPorts(Client& client);
    void readEvents(Client& client);
    std::vector<AlsaPort> listPorts() const;
    void snapshot(MidiDirection direction);
    Client* clientOf(MidiPortRef port, bool isInput) const;

    std::vector<std::unique_ptr<Client>> m_clients; // ref = index + 1
    std::map<MidiPortRef, PortRef> m_ports;
    MidiPortRef m_nextPort = 1;

    // The last enumeration: endpoints by index, and the display names they had then.
    std::vector<MidiEndpointRef> m_sources;
    std::vector<MidiEndpointRef> m_destinations;
    std::map<MidiEndpointRef, QString> m_names;
};

} // namespace orvan
