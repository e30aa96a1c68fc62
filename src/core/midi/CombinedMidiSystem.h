#pragma once

#include "MidiEndpointRefs.h"
#include "ListingMidiSystem.h"

#include <QObject>
#include <functional>
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
/// source is attached again before it runs (attaching an attached source is harmless). The engine
/// detaches and re-attaches its source on every rescan, and the real systems drop whatever
/// arrives while a connection is down (JACK would run a cycle or more without it); this way a
/// rescan caused by some other device never loses a report from a unit that stays. The member
/// systems detach at once: this is the one place that holds detaches back.
class CombinedMidiSystem final : public ListingMidiSystem {
public:
    explicit CombinedMidiSystem(std::vector<std::unique_ptr<MidiSystem>> systems);
    ~CombinedMidiSystem() override;

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
    /// An endpoint of one member system: (system index, its own ref).
    using Inner = std::pair<std::size_t, MidiEndpointRef>;
    using PerSystem = std::vector<quint32>; // one handle per member system, 0 = none

    /// A member system, the port's handle there and the endpoint's own ref in it.
    struct Route {
        MidiSystem& system;
        MidiPortRef port;
        MidiEndpointRef endpoint;
    };
    using CreatePort = std::function<MidiPortRef(MidiSystem&, MidiClientRef)>;

    MidiPortRef createPort(MidiClientRef client, const CreatePort& create);
    /// Where a message between `port` and `endpoint` goes; none when the port has no handle there.
    std::optional<Route> route(MidiPortRef port, MidiEndpointRef endpoint) const;
    void snapshot(bool sources);
    void flushDetaches();

    std::vector<std::unique_ptr<MidiSystem>> m_systems;
    std::map<quint32, PerSystem> m_clients;
    std::map<quint32, PerSystem> m_ports;
    quint32 m_nextHandle = 1;

    MidiEndpointRefs<Inner> m_refs; // each ref stays bound to one member endpoint

    std::set<std::pair<MidiPortRef, MidiEndpointRef>> m_attached;
    std::set<std::pair<MidiPortRef, MidiEndpointRef>> m_pendingDetach;
    QObject m_context; // posted flushes die with this object
    bool m_flushPosted = false;
};

} // namespace orvan
