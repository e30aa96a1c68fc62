#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <span>

namespace orvan {

/// Handles of the MIDI system; 0 always means "none" (a failed creation leaves 0).
using MidiClientRef = quint32;
using MidiPortRef = quint32;
using MidiEndpointRef = quint32;

/// The notification that the set of endpoints or their names changed.
inline constexpr int kMidiSetupChanged = 1;

/// What the engine needs of a host MIDI system. The engine never learns which system it talks to.
///
/// Callbacks may arrive on a thread of the MIDI system; receivers must only post work to the main
/// thread from them. Every other call is made on the main thread.
class MidiSystem {
public:
    using NotifyCallback = std::function<void(int messageId)>;
    /// Receives one event list: Universal MIDI Packet words in the MIDI 1.0 protocol.
    using ReceiveCallback = std::function<void(std::span<const quint32> words)>;

    virtual ~MidiSystem() = default;

    virtual MidiClientRef createClient(const QString& name, NotifyCallback notify) = 0;
    virtual MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) = 0;
    virtual MidiPortRef createOutputPort(MidiClientRef client, const QString& name) = 0;

    /// Lists the endpoints again, for the counts and indexes below to give; this is also where a
    /// system that was missing (no server, no sequencer) is looked for again. Systems that always
    /// list what is there now need nothing here.
    virtual void refresh() {}
    /// As the last refresh() found them.
    virtual int sourceCount() const = 0;
    virtual MidiEndpointRef source(int index) const = 0;
    virtual int destinationCount() const = 0;
    virtual MidiEndpointRef destination(int index) const = 0;
    /// May give no name; such an endpoint is passed over.
    virtual std::optional<QString> displayName(MidiEndpointRef endpoint) const = 0;

    virtual void connectSource(MidiPortRef inPort, MidiEndpointRef source) = 0;
    virtual void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) = 0;

    /// Makes sure messages sent through `outPort` reach `destination`, whatever happened to the
    /// destination since (a unit unplugged and plugged back in under the same name); called on
    /// every rescan that finds it. False while they cannot reach it yet; the system then sends a
    /// setup-changed notification once they can. Systems that address every message to its
    /// destination need nothing here.
    virtual bool connectDestination(MidiPortRef /*outPort*/, MidiEndpointRef /*destination*/) { return true; }

    /// Lets a system that was told to wait begin opening what it needs (which may be slow); the
    /// application calls it once its first frame is on screen. Systems that never wait need
    /// nothing here.
    virtual void start() {}

    /// Sends one message, one UMP word, now.
    virtual void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) = 0;
};

} // namespace orvan
