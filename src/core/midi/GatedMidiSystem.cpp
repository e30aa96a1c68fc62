#include "GatedMidiSystem.h"

namespace orvan {

GatedMidiSystem::GatedMidiSystem(std::function<std::unique_ptr<MidiSystem>()> makeSystem)
    : m_makeSystem(std::move(makeSystem))
{
}

GatedMidiSystem::~GatedMidiSystem() = default;

MidiClientRef GatedMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    m_clients.push_back(Client{name, std::move(notify)});
    if (m_system && !open(m_clients.back())) {
        m_clients.pop_back();
        return 0;
    }
    return MidiClientRef(m_clients.size());
}

MidiPortRef GatedMidiSystem::createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive)
{
    return createPort(client, name, true, std::move(receive));
}

MidiPortRef GatedMidiSystem::createOutputPort(MidiClientRef client, const QString& name)
{
    return createPort(client, name, false, nullptr);
}

MidiPortRef GatedMidiSystem::createPort(MidiClientRef client, const QString& name, bool isInput, ReceiveCallback receive)
{
    if (client == 0 || client > m_clients.size())
        return 0;
    m_ports.push_back(Port{client, name, isInput, std::move(receive)});
    if (m_system && !open(m_ports.back())) {
        m_ports.pop_back();
        return 0;
    }
    return MidiPortRef(m_ports.size());
}

MidiClientRef GatedMidiSystem::open(Client& client)
{
    client.real = m_system->createClient(client.name, client.notify);
    return client.real;
}

MidiPortRef GatedMidiSystem::open(Port& port)
{
    const MidiClientRef client = m_clients[port.client - 1].real;
    if (client == 0)
        return 0;
    port.real = port.isInput ? m_system->createInputPort(client, port.name, port.receive)
                             : m_system->createOutputPort(client, port.name);
    return port.real;
}

MidiPortRef GatedMidiSystem::real(MidiPortRef port) const
{
    return port == 0 || port > m_ports.size() ? 0 : m_ports[port - 1].real;
}

void GatedMidiSystem::refresh()
{
    if (m_system)
        m_system->refresh();
}

int GatedMidiSystem::sourceCount() const { return m_system ? m_system->sourceCount() : 0; }
MidiEndpointRef GatedMidiSystem::source(int index) const { return m_system ? m_system->source(index) : 0; }
int GatedMidiSystem::destinationCount() const { return m_system ? m_system->destinationCount() : 0; }
MidiEndpointRef GatedMidiSystem::destination(int index) const { return m_system ? m_system->destination(index) : 0; }

std::optional<QString> GatedMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    return m_system ? m_system->displayName(endpoint) : std::nullopt;
}

void GatedMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    if (const MidiPortRef port = real(inPort); m_system && port)
        m_system->connectSource(port, source);
}

void GatedMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    if (const MidiPortRef port = real(inPort); m_system && port)
        m_system->disconnectSource(port, source);
}

bool GatedMidiSystem::connectDestination(MidiPortRef outPort, MidiEndpointRef destination)
{
    const MidiPortRef port = real(outPort);
    return m_system && port && m_system->connectDestination(port, destination);
}

void GatedMidiSystem::start()
{
    if (m_system)
        return;
    m_system = m_makeSystem();
    for (Client& client : m_clients)
        open(client);
    for (Port& port : m_ports)
        open(port);
    m_system->start();
    // Each engine looks for its unit, as after hot-plugging.
    for (const Client& client : m_clients) {
        if (client.notify)
            client.notify(kMidiSetupChanged);
    }
}

void GatedMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    if (const MidiPortRef port = real(outPort); m_system && port)
        m_system->send(port, destination, word);
}

} // namespace orvan
