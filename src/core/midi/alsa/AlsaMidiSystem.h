#pragma once

#include "../MidiPortTable.h"
#include "AlsaPortListing.h"

#include <map>
#include <memory>
#include <vector>

class QSocketNotifier;
typedef struct _snd_seq snd_seq_t;

namespace orvan {

/// One sequencer client of the app and what it was asked for.
struct AlsaClient : MidiClientWish {
    static constexpr int kNoPort = -1;
    snd_seq_t* seq = nullptr;
    int inPort = kNoPort;
    int outPort = kNoPort;
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers;
    std::vector<quint32> words; // reused between reads
};

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
class AlsaMidiSystem final : public PortTableMidiSystem<AlsaClient> {
public:
    AlsaMidiSystem();
    ~AlsaMidiSystem() override;

    /// Whether any client is open on the sequencer.
    bool isOpen() const;

    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    void refresh() override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    using Client = AlsaClient;

    void openMissing();
    void open(Client& client);
    void openPorts(Client& client) override;
    void readEvents(Client& client);
    std::vector<AlsaPort> listPorts() const;
    void snapshot(const std::vector<AlsaPort>& ports, MidiDirection direction);
    Client* clientOf(MidiPortRef port, bool isInput) const;
    void subscribe(MidiPortRef inPort, MidiEndpointRef source, bool subscribed);

    // The last refresh: endpoints by index, and the display names they had then.
    std::map<MidiEndpointRef, QString> m_names;
};

} // namespace orvan
