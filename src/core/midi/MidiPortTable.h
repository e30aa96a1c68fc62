#pragma once

#include "ListingMidiSystem.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace orvan {

/// What the engine asked of one client: its name, callbacks and ports. A system keeps it even
/// while it cannot open the client, and opens everything asked once it can.
struct MidiClientWish {
    QString name;
    MidiSystem::NotifyCallback notify;
    MidiSystem::ReceiveCallback receive;
    QString inName;
    QString outName;
    bool wantsIn = false;
    bool wantsOut = false;
};

/// The clients a MIDI system handed out and their ports, by ref (client ref = index + 1; port
/// refs count from 1; 0 is "none"). `Client` is the system's own client, a MidiClientWish.
template <typename Client>
class MidiPortTable {
public:
    MidiClientRef addClient(std::unique_ptr<Client> client)
    {
        m_clients.push_back(std::move(client));
        return MidiClientRef(m_clients.size());
    }

    /// Records the port the engine asks of `client`: the client, to open the port on, and the
    /// port's ref; no client and 0 when there is no such client.
    std::pair<Client*, MidiPortRef> addPort(MidiClientRef client, const QString& name, bool isInput,
                                            MidiSystem::ReceiveCallback receive = {})
    {
        if (client == 0 || client > m_clients.size())
            return {nullptr, 0};
        Client& c = *m_clients[client - 1];
        (isInput ? c.wantsIn : c.wantsOut) = true;
        (isInput ? c.inName : c.outName) = name;
        if (isInput)
            c.receive = std::move(receive);
        m_ports[m_nextPort] = {client, isInput};
        return {&c, m_nextPort++};
    }

    /// The client owning `port`, when it is a port of that direction.
    Client* clientOf(MidiPortRef port, bool isInput) const
    {
        const auto it = m_ports.find(port);
        if (it == m_ports.end() || it->second.isInput != isInput)
            return nullptr;
        return m_clients[it->second.client - 1].get();
    }

    const std::vector<std::unique_ptr<Client>>& clients() const { return m_clients; }
    std::vector<std::unique_ptr<Client>>& clients() { return m_clients; }

private:
    struct Port {
        MidiClientRef client;
        bool isInput;
    };

    std::vector<std::unique_ptr<Client>> m_clients;
    std::map<MidiPortRef, Port> m_ports;
    MidiPortRef m_nextPort = 1;
};

/// A host MIDI system whose clients and ports are kept in a MidiPortTable: a port the engine asks
/// for is recorded first, so that a client that cannot open it yet opens it later.
template <typename Client>
class PortTableMidiSystem : public ListingMidiSystem {
public:
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) final
    {
        return addPort(client, name, true, std::move(receive));
    }
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) final
    {
        return addPort(client, name, false, {});
    }

protected:
    /// Opens the ports `client` was asked for and does not have yet, if it can now.
    virtual void openPorts(Client& client) = 0;

    MidiPortTable<Client> m_table;

private:
    MidiPortRef addPort(MidiClientRef client, const QString& name, bool isInput, ReceiveCallback receive)
    {
        const auto [c, port] = m_table.addPort(client, name, isInput, std::move(receive));
        if (c)
            openPorts(*c);
        return port;
    }
};

} // namespace orvan
