#pragma once

#include "ChannelState.h"
#include "DeviceSpec.h"
#include "midi/MidiSystem.h"
#include "Publish.h"

#include <QObject>
#include <chrono>
#include <optional>
#include <vector>

namespace orvan {

class Clock;

/// The engine of one unit: finds the unit's endpoints by name, keeps them across hot-plugging,
/// sends Control Changes and applies the unit's reports to `channels`.
///
/// Lives on the main thread. The MIDI system's callbacks only post work to it.
class OrvanMIDI final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<orvan::ChannelState> channels READ channels NOTIFY channelsChanged)
    Q_PROPERTY(bool isConnected READ isConnected NOTIFY isConnectedChanged)
    Q_PROPERTY(bool hardwarePresent READ hardwarePresent NOTIFY hardwarePresentChanged)

public:
    /// Creates the client "OrvanRCU-<title>" with ports "In" and "Out", looks for the unit, then
    /// follows the demo flag (which may load the sample set before this returns).
    OrvanMIDI(DeviceSpec spec, MidiSystem& system, const Clock& clock, QObject* parent = nullptr);

    const DeviceSpec& spec() const { return m_spec; }
    const ChannelStates& channels() const { return m_channels; }
    bool isConnected() const { return m_isConnected; }
    bool hardwarePresent() const { return m_hardwarePresent; }
    bool demoLoaded() const { return m_demoLoaded; }

    /// Looks for the unit's endpoints again and updates the connection flags.
    void connect();

    /// Sets a channel's gain (clamped to its range) and sends it. Refused when not connected, or
    /// for an unverified unit outside demo state.
    void setGain(int channel, qint64 value);

    /// Switches one switch of one channel and sends it; refused like setGain.
    void set(OrvanSwitch s, int channel, bool on);

signals:
    void channelsChanged();
    void isConnectedChanged(bool isConnected);
    void hardwarePresentChanged(bool hardwarePresent);

private:
    struct SentGain {
        qint64 value;
        std::chrono::nanoseconds time;
    };

    bool acceptsRequests() const;
    void send(int controller, int value);
    void receive(int controller, int value);
    void receiveGain(int channel, qint64 reported);
    void applyDemo(bool on);
    void loadDemoState();
    void resetChannels();
    void setChannels(ChannelStates channels)
    {
        publish(this, &OrvanMIDI::channelsChanged, m_channels, std::move(channels));
    }
    void setIsConnected(bool connected) { publish(this, &OrvanMIDI::isConnectedChanged, m_isConnected, connected); }
    void setHardwarePresent(bool present)
    {
        publish(this, &OrvanMIDI::hardwarePresentChanged, m_hardwarePresent, present);
    }

    const DeviceSpec m_spec;
    MidiSystem& m_system;
    const Clock& m_clock;

    ChannelStates m_channels;
    bool m_isConnected = false;
    bool m_hardwarePresent = false;
    bool m_demoLoaded = false;

    MidiClientRef m_client = 0;
    MidiPortRef m_inPort = 0;
    MidiPortRef m_outPort = 0;
    MidiEndpointRef m_source = 0;
    MidiEndpointRef m_destination = 0;

    std::vector<bool> m_gainRising;
    std::vector<std::optional<SentGain>> m_lastSentGain;
};

} // namespace orvan
