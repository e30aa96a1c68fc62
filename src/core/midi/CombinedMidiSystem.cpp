#include "CombinedMidiSystem.h"

namespace orvan {

CombinedMidiSystem::CombinedMidiSystem(std::vector<std::unique_ptr<MidiSystem>> systems)
    : m_systems(std::move(systems))
{
}

CombinedMidiSystem::~CombinedMidiSystem() = default;

MidiClientRef CombinedMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    PerSystem handles;
    bool any = false;
    for (auto& system : m_systems) {
        handles.push_back(system->createClient(name, notify));
        any = any || handles.back() != 0;
    }
    if (!any)
        return 0;
    m_clients[m_nextHandle] = std::move(handles);
    return m_nextHandle++;
}

MidiPortRef CombinedMidiSystem::createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive)
{
    return createPort(client, [&](MidiSystem& s, MidiClientRef c) { return s.createInputPort(c, name, receive); });
}

MidiPortRef CombinedMidiSystem::createOutputPort(MidiClientRef client, const QString& name)
{
    return createPort(client, [&](MidiSystem& s, MidiClientRef c) { return s.createOutputPort(c, name); });
}

MidiPortRef CombinedMidiSystem::createPort(MidiClientRef client, const CreatePort& create)
{
    const auto it = m_clients.find(client);
    if (it == m_clients.end())
        return 0;
    PerSystem handles;
    for (std::size_t i = 0; i < m_systems.size(); ++i)
        handles.push_back(it->second[i] ? create(*m_systems[i], it->second[i]) : 0);
    m_ports[m_nextHandle] = std::move(handles);
    return m_nextHandle++;
}

std::optional<CombinedMidiSystem::Route> CombinedMidiSystem::route(MidiPortRef port, MidiEndpointRef endpoint) const
{
    const auto e = m_refs.keyOf(endpoint);
    const auto p = m_ports.find(port);
    if (!e || p == m_ports.end() || p->second[e->first] == 0)
        return std::nullopt;
    return Route{*m_systems[e->first], p->second[e->first], e->second};
}

// --- Enumeration ------------------------------------------------------------------------------

void CombinedMidiSystem::snapshot(bool sources)
{
    auto& list = sources ? m_sources : m_destinations;
    list.clear();
    for (std::size_t i = 0; i < m_systems.size(); ++i) {
        const MidiSystem& system = *m_systems[i];
        const int count = sources ? system.sourceCount() : system.destinationCount();
        for (int k = 0; k < count; ++k) {
            const MidiEndpointRef ref = sources ? system.source(k) : system.destination(k);
            if (ref != 0)
                list.push_back(m_refs.refFor({i, ref}));
        }
    }
}

void CombinedMidiSystem::refresh()
{
    for (auto& system : m_systems)
        system->refresh();
    snapshot(true);
    snapshot(false);
}

std::optional<QString> CombinedMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    const auto e = m_refs.keyOf(endpoint);
    return e ? m_systems[e->first]->displayName(e->second) : std::nullopt;
}

// --- Connections and sending ------------------------------------------------------------------

void CombinedMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    const auto key = std::pair(inPort, source);
    // Cancels a pending detach, so the link is never down. Attached again all the same: a unit
    // unplugged and plugged back under the same ref lost its link with its port.
    m_pendingDetach.erase(key);
    m_attached.insert(key);
    if (const auto r = route(inPort, source))
        r->system.connectSource(r->port, r->endpoint);
}

void CombinedMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    const auto key = std::pair(inPort, source);
    if (!m_attached.contains(key))
        return;
    m_pendingDetach.insert(key);
    if (m_flushPosted)
        return;
    m_flushPosted = true;
    QMetaObject::invokeMethod(&m_context, [this] { flushDetaches(); }, Qt::QueuedConnection);
}

void CombinedMidiSystem::flushDetaches()
{
    m_flushPosted = false;
    for (const auto& [port, source] : m_pendingDetach) {
        m_attached.erase({port, source});
        if (const auto r = route(port, source))
            r->system.disconnectSource(r->port, r->endpoint);
    }
    m_pendingDetach.clear();
}

void CombinedMidiSystem::start()
{
    for (auto& system : m_systems)
        system->start();
}

bool CombinedMidiSystem::connectDestination(MidiPortRef outPort, MidiEndpointRef destination)
{
    const auto r = route(outPort, destination);
    return r && r->system.connectDestination(r->port, r->endpoint);
}

void CombinedMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    if (const auto r = route(outPort, destination))
        r->system.send(r->port, r->endpoint, word);
}

} // namespace orvan
