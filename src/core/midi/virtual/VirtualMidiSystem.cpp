#include "VirtualMidiSystem.h"

#include "../../time/Clock.h"

#include <QStringList>
#include <algorithm>

namespace orvan {

VirtualMidiSystem::VirtualMidiSystem(const Clock* clock)
    : m_clock(clock)
{
}

MidiEndpointRef VirtualMidiSystem::addEndpoint(std::vector<MidiEndpointRef>& list, std::optional<QString> name, bool notify)
{
    const MidiEndpointRef ref = m_nextRef++;
    list.push_back(ref);
    m_names[ref] = std::move(name);
    if (notify)
        notifySetupChanged();
    return ref;
}

MidiEndpointRef VirtualMidiSystem::addSource(std::optional<QString> name)
{
    return addEndpoint(m_sources, std::move(name), true);
}

MidiEndpointRef VirtualMidiSystem::addDestination(std::optional<QString> name)
{
    return addEndpoint(m_destinations, std::move(name), true);
}

VirtualMidiSystem::Device VirtualMidiSystem::addDevice(const QString& name)
{
    Device device{addEndpoint(m_sources, name, false), addEndpoint(m_destinations, name, false)};
    notifySetupChanged();
    return device;
}

void VirtualMidiSystem::forget(MidiEndpointRef endpoint)
{
    std::erase(m_sources, endpoint);
    std::erase(m_destinations, endpoint);
    m_names.erase(endpoint);
    for (auto& [ref, port] : m_ports)
        std::erase(port.attachedSources, endpoint);
}

void VirtualMidiSystem::remove(MidiEndpointRef endpoint)
{
    forget(endpoint);
    notifySetupChanged();
}

void VirtualMidiSystem::removeDevice(Device device)
{
    forget(device.source);
    forget(device.destination);
    notifySetupChanged();
}

void VirtualMidiSystem::rename(MidiEndpointRef endpoint, std::optional<QString> name)
{
    if (!m_names.contains(endpoint))
        return;
    m_names[endpoint] = std::move(name);
    notifySetupChanged();
}

void VirtualMidiSystem::inject(MidiEndpointRef source, std::span<const quint32> words)
{
    // Copy the receivers first: a receiver may change the port table.
    std::vector<ReceiveCallback> receivers;
    for (const auto& [ref, port] : m_ports) {
        if (port.receive && std::ranges::find(port.attachedSources, source) != port.attachedSources.end())
            receivers.push_back(port.receive);
    }
    for (const auto& receive : receivers)
        receive(words);
}

void VirtualMidiSystem::injectControlChange(MidiEndpointRef source, int controller, int value, int midiChannel, int group)
{
    const quint32 word = Midi::controlChangeWord(controller, value, midiChannel, group);
    inject(source, std::span<const quint32>(&word, 1));
}

void VirtualMidiSystem::notifySetupChanged()
{
    std::vector<NotifyCallback> callbacks;
    for (const auto& [ref, client] : m_clients)
        callbacks.push_back(client.notify);
    for (const auto& notify : callbacks) {
        if (notify)
            notify(kMidiSetupChanged);
    }
}

std::vector<VirtualMidiSystem::SentMessage> VirtualMidiSystem::sentTo(const QString& destinationName) const
{
    std::vector<SentMessage> result;
    std::ranges::copy_if(m_sent, std::back_inserter(result),
                         [&](const SentMessage& m) { return m.destinationName == destinationName; });
    return result;
}

QStringList VirtualMidiSystem::clientNames() const
{
    QStringList names;
    for (const auto& [ref, client] : m_clients)
        names << client.name;
    return names;
}

bool VirtualMidiSystem::isAttached(MidiEndpointRef source) const
{
    return std::ranges::any_of(m_ports, [&](const auto& entry) {
        return std::ranges::find(entry.second.attachedSources, source) != entry.second.attachedSources.end();
    });
}

MidiClientRef VirtualMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    const MidiClientRef ref = m_nextRef++;
    m_clients[ref] = {name, std::move(notify)};
    return ref;
}

MidiPortRef VirtualMidiSystem::createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive)
{
    if (!m_clients.contains(client))
        return 0;
    const MidiPortRef ref = m_nextRef++;
    m_ports[ref] = {client, name, std::move(receive), {}};
    return ref;
}

MidiPortRef VirtualMidiSystem::createOutputPort(MidiClientRef client, const QString& name)
{
    return createInputPort(client, name, {}); // a port that receives nothing
}

std::optional<QString> VirtualMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    const auto it = m_names.find(endpoint);
    return it == m_names.end() ? std::nullopt : it->second;
}

void VirtualMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    auto it = m_ports.find(inPort);
    if (it == m_ports.end() || !m_names.contains(source))
        return;
    auto& attached = it->second.attachedSources;
    if (std::ranges::find(attached, source) == attached.end())
        attached.push_back(source);
}

void VirtualMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    auto it = m_ports.find(inPort);
    if (it != m_ports.end())
        std::erase(it->second.attachedSources, source);
}

void VirtualMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    if (!m_ports.contains(outPort) || std::ranges::find(m_destinations, destination) == m_destinations.end())
        return; // an endpoint that vanished takes nothing
    m_sent.push_back({destination, m_names[destination].value_or(QString()), word,
                      m_clock ? m_clock->now() : std::chrono::nanoseconds{0}});
}

} // namespace orvan
