#pragma once

#include "MidiSystem.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvan {

/// A MIDI system that does not exist until start(): before it, clients and ports are only
/// promised (their handles are this gate's own) and no endpoint is seen; start() makes the real
/// system, opens what was promised on it and tells every client that the setup changed, as
/// hot-plugging does. A session manager's client must open no MIDI client before its session is
/// open; ALSA's would open at once otherwise.
class GatedMidiSystem final : public MidiSystem {
public:
    explicit GatedMidiSystem(std::function<std::unique_ptr<MidiSystem>()> makeSystem);
    ~GatedMidiSystem() override;

    MidiClientRef createClient(const QString& name, NotifyCallback notify) override;
    MidiPortRef createInputPort(MidiClientRef client, const QString& name, ReceiveCallback receive) override;
    MidiPortRef createOutputPort(MidiClientRef client, const QString& name) override;

    void refresh() override;
    int sourceCount() const override;
    MidiEndpointRef source(int index) const override;
    int destinationCount() const override;
    MidiEndpointRef destination(int index) const override;
    std::optional<QString> displayName(MidiEndpointRef endpoint) const override;

    void connectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    void disconnectSource(MidiPortRef inPort, MidiEndpointRef source) override;
    bool connectDestination(MidiPortRef outPort, MidiEndpointRef destination) override;

    /// Opens the real system (once) and starts it.
    void start() override;

    void send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word) override;

private:
    struct Client {
        QString name;
        NotifyCallback notify;
        MidiClientRef real = 0;
    };
    struct Port {
        MidiClientRef client; ///< this gate's handle
        QString name;
        bool isInput;
        ReceiveCallback receive;
        MidiPortRef real = 0;
    };
    MidiPortRef createPort(MidiClientRef client, const QString& name, bool isInput, ReceiveCallback receive);
    MidiClientRef open(Client& client);
    MidiPortRef open(Port& port);
    MidiPortRef real(MidiPortRef port) const;

    std::function<std::unique_ptr<MidiSystem>()> m_makeSystem;
    std::unique_ptr<MidiSystem> m_system;
    std::vector<Client> m_clients; ///< handle i + 1
    std::vector<Port> m_ports;     ///< handle i + 1
};

} // namespace orvan
