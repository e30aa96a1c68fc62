#pragma once

#include "MidiSystem.h"

#include <QObject>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace orvan {

/// Several MIDI systems seen as one: every client gets a client and the same ports on each, and
/// enumeration lists the first system's endpoints, then the next one's, so a unit is found by its
/// name wherever it appears. A system that creates nothing adds nothing.
///
/// Detaching a source is deferred to a task posted on the main loop and cancelled when the same
/// source is attached again before it runs (attaching an attached source is harmless). The engine detaches and re-attaches its source on
/// every rescan, and the real systems drop whatever arrives while a connection is down; this way
/// a rescan caused by some other device never loses a report from a unit that stays.
class CombinedMidiSystem final : public MidiSystem {
public:
    explicit CombinedMidiSystem(std::vector<std::unique_ptr<MidiSystem>> systems);
    ~CombinedMidiSystem() override;

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

private:
    /// An endpoint of one member system: (system index, its own ref).
    using Inner = std::pair<std::size_t, MidiEndpointRef>;
    using PerSystem = std::vector<quint32>; // one handle per member system, 0 = none

    MidiEndpointRef outerRef(std::size_t system, MidiEndpointRef inner) const;
    std::optional<Inner> inner(MidiEndpointRef outer) const;
    void snapshot(bool sources) const;
    void attach(MidiPortRef inPort, MidiEndpointRef source);
    void detach(MidiPortRef inPort, MidiEndpointRef source);
    void flushDetaches();

    std::vector<std::unique_ptr<MidiSystem>> m_systems;
    std::map<quint32, PerSystem> m_clients;
    std::map<quint32, PerSystem> m_ports;
    quint32 m_nextHandle = 1;

    // Refs are handed out on first sight and stay bound to one member endpoint.
    mutable std::map<Inner, MidiEndpointRef> m_outerByInner;
    mutable std::vector<Inner> m_innerByOuter; // outer ref = index + 1
    mutable std::vector<MidiEndpointRef> m_sources;
    mutable std::vector<MidiEndpointRef> m_destinations;

    std::set<std::pair<MidiPortRef, MidiEndpointRef>> m_attached;
    std::set<std::pair<MidiPortRef, MidiEndpointRef>> m_pendingDetach;
    QObject m_context; // posted flushes die with this object
    bool m_flushPosted = false;
};

} // namespace orvan
