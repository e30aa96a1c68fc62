#pragma once

#include "../MidiPortTable.h"
#include "../ListingMidiSystem.h"
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
/// the next refresh() that finds the sequencer there; until then it costs one stat().
class AlsaMidiSystem final : public ListingMidiSystem {
public:
    AlsaMidiSystem();
    ~AlsaMidiSystem() override;

    /// Whether any client is open on the sequencer.
    bool isOpen() const;

    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) override;
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) override;
    void refresh() override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    struct Client;

    void openMissing();
    void open(Client& client);
    void openPorts(Client& client);
    void readEvents(Client& client);
    std::vector<AlsaPort> listPorts() const;
    void snapshot(MidiDirection direction);
    Client* clientOf(MidiPortRef port, bool isInput) const;
    void subscribe(MidiPortRef inPort, MidiEndpointRef source, bool subscribed);

    MidiPortTable<Client> m_table;

    // The last refresh: endpoints by index, and the display names they had then.
    std::map<MidiEndpointRef, QString> m_names;
};

} // namespace orvan
