#pragma once

#include "../ListingMidiSystem.h"
#include "../MidiVocabulary.h"

#include <chrono>
#include <map>
#include <vector>

namespace orvan {

class Clock;

/// An in-process MIDI system. Tests and the simulator add, remove and rename endpoints, inject
/// incoming words, and read back every message that was sent, with the time it was sent.
///
/// Endpoint changes notify every client synchronously, as a real system would from its own thread;
/// the engine posts the work to the main thread either way.
class VirtualMidiSystem final : public ListingMidiSystem {
public:
    struct SentMessage {
        MidiEndpointRef destination = 0;
        QString destinationName;
        quint32 word = 0;
        std::chrono::nanoseconds time{0};

        /// All zero for a word that is no MIDI 1.0 channel voice message.
        Midi::WordParts parts() const { return Midi::partsOf(word).value_or(Midi::WordParts{}); }
        int controller() const { return parts().data1; }
        int value() const { return parts().data2; }
    };

    explicit VirtualMidiSystem(const Clock* clock = nullptr);

    MidiEndpointRef addSource(std::optional<QString> name);
    MidiEndpointRef addDestination(std::optional<QString> name);
    struct Device {
        MidiEndpointRef source;
        MidiEndpointRef destination;
    };
    /// A unit: one source and one destination with the same name, added in one setup change.
    Device addDevice(const QString& name);
    void remove(MidiEndpointRef endpoint);
    void removeDevice(Device device);
    void rename(MidiEndpointRef endpoint, std::optional<QString> name);

    /// Delivers an event list from `source` to every input port it is attached to.
    void inject(MidiEndpointRef source, std::span<const quint32> words);
    /// A Control Change from `source` on the given MIDI channel (0-15) and group (0-15).
    void injectControlChange(MidiEndpointRef source, int controller, int value, int midiChannel = 0, int group = 0);

    /// Tells every client that the setup changed (the endpoint calls do this themselves).
    void notifySetupChanged();

    const std::vector<SentMessage>& sent() const { return m_sent; }
    std::vector<SentMessage> sentTo(const QString& destinationName) const;
    void clearSent() { m_sent.clear(); }

    QStringList clientNames() const;
    bool isAttached(MidiEndpointRef source) const;

    // MidiSystem
    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) override;
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;
    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    struct Client {
        QString name;
        NotifyCallback notify;
    };
    struct Port {
        MidiClientRef client;
        QString name;
        ReceiveCallback receive; // empty for output ports
        std::vector<MidiEndpointRef> attachedSources;
    };

    /// Takes an endpoint out of the listings and off every port, without telling anyone.
    void forget(MidiEndpointRef endpoint);
    MidiEndpointRef addEndpoint(std::vector<MidiEndpointRef>& list, std::optional<QString> name, bool notify);

    const Clock* m_clock;
    quint32 m_nextRef = 1;
    std::map<MidiClientRef, Client> m_clients;
    std::map<MidiPortRef, Port> m_ports;
    std::map<MidiEndpointRef, std::optional<QString>> m_names;
    std::vector<SentMessage> m_sent;
};

} // namespace orvan
