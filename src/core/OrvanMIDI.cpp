#include "OrvanMIDI.h"

#include "ControlChange.h"
#include "DemoMode.h"
#include "DemoSamples.h"
#include "UnitName.h"
#include "midi/OwnClientName.h"
#include "time/Clock.h"

#include <QCoreApplication>
#include <QPointer>
#include <algorithm>

namespace orvan {

namespace {

constexpr auto kEchoWindow = std::chrono::milliseconds(500);
constexpr qint64 kFineTop = 2;

/// Runs `task` on the main thread later. Safe to call from any thread.
template <typename Task>
void postToMainThread(Task task)
{
    if (QCoreApplication* app = QCoreApplication::instance())
        QMetaObject::invokeMethod(app, std::move(task), Qt::QueuedConnection);
}

} // namespace

OrvanMIDI::OrvanMIDI(DeviceSpec spec, MidiSystem& system, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_spec(std::move(spec))
    , m_system(system)
    , m_clock(clock)
    , m_channels(defaultChannels(m_spec.channelCount))
    , m_gainRising(std::size_t(m_spec.channelCount), true)
    , m_lastSentGain(std::size_t(m_spec.channelCount))
{
    const QPointer<OrvanMIDI> weak(this);

    // Called on a thread of the MIDI system: only posts.
    m_client = m_system.createClient(QLatin1String(kOwnClientPrefix) + m_spec.title, [weak](int messageId) {
        if (messageId != kMidiSetupChanged)
            return;
        postToMainThread([weak] {
            if (weak)
                weak->connect();
        });
    });

    // Called on a thread of the MIDI system: parses into a private list and posts it.
    m_inPort = m_system.createInputPort(m_client, QStringLiteral("In"), [weak](std::span<const quint32> words) {
        auto triples = ControlChange::parseUmpWords(words);
        if (triples.empty())
            return;
        postToMainThread([weak, triples = std::move(triples)] {
            if (!weak)
                return;
            for (const auto& t : triples)
                weak->receive(t.data1, t.data2);
        });
    });
    m_outPort = m_system.createOutputPort(m_client, QStringLiteral("Out"));

    connect();

    DemoMode::shared().subscribe(this, [this](bool on) { applyDemo(on); });
}

// --- Connection -------------------------------------------------------------------------------

void OrvanMIDI::connect()
{
    const bool wasConnected = m_isConnected;

    if (m_source != 0)
        m_system.disconnectSource(m_inPort, m_source);

    // The unit's own name beats its name through a bridge: under PipeWire the same unit is seen
    // both as the kernel sequencer client and through the graph, and driving it both ways would
    // send every message and apply every report twice. Source and destination come from the best
    // kind of name either has, so one unit is never driven through two systems at once.
    struct Found {
        MidiEndpointRef endpoint = 0;
        UnitNameMatch match = UnitNameMatch::none;
    };
    const auto findByName = [this](int count, auto endpointAt) {
        Found best;
        for (int i = 0; i < count; ++i) {
            const MidiEndpointRef endpoint = endpointAt(i);
            const auto name = m_system.displayName(endpoint);
            const UnitNameMatch match = name ? matchUnitName(*name, m_spec.portName) : UnitNameMatch::none;
            if (match > best.match)
                best = {endpoint, match};
        }
        return best;
    };
    m_system.refresh();
    const Found source = findByName(m_system.sourceCount(), [this](int i) { return m_system.source(i); });
    const Found destination = findByName(m_system.destinationCount(), [this](int i) { return m_system.destination(i); });
    const UnitNameMatch kind = std::max(source.match, destination.match);
    m_source = source.match == kind ? source.endpoint : 0;
    m_destination = destination.match == kind ? destination.endpoint : 0;

    // The unit may have come back under the same name: make sure our output reaches it again.
    // A destination our messages cannot reach yet is not one: the system announces it once it is.
    if (m_destination != 0 && !m_system.connectDestination(m_outPort, m_destination))
        m_destination = 0;

    bool present = false;
    if (m_source != 0) {
        // Attached even without a destination, so a half-present unit's reports still show.
        m_system.connectSource(m_inPort, m_source);
        present = m_destination != 0;
    }
    setHardwarePresent(present);

    if (m_hardwarePresent) {
        if (m_demoLoaded) {
            m_demoLoaded = false;
            resetChannels();
        }
        // Real hardware ends demo mode for every unit, not just this one.
        if (DemoMode::shared().active())
            DemoMode::shared().setActive(false);
    }

    setIsConnected(m_hardwarePresent || m_demoLoaded);

    if (wasConnected && !m_isConnected) {
        resetChannels();
        std::fill(m_gainRising.begin(), m_gainRising.end(), true);
        std::ranges::fill(m_lastSentGain, std::nullopt);
    }
}

// --- Outgoing ---------------------------------------------------------------------------------

bool OrvanMIDI::acceptsRequests() const
{
    return m_isConnected && (m_spec.verified || m_demoLoaded);
}

void OrvanMIDI::send(int controller, int value)
{
    if (m_destination == 0)
        return;
    m_system.send(m_outPort, m_destination, Midi::controlChangeWord(controller, value));
}

void OrvanMIDI::setGain(int channel, qint64 value)
{
    if (!acceptsRequests() || channel < 0 || channel >= m_channels.size())
        return;
    const GainRange range = gainRange(m_spec, m_channels.at(channel).di);
    const qint64 gain = std::clamp(value, range.lowest, range.highest);

    ChannelStates next = m_channels;
    next[channel].gainValue = gain;
    next[channel].gainFine = 0;
    setChannels(std::move(next));
    m_lastSentGain[std::size_t(channel)] = SentGain{gain, m_clock.now()};

    send(ControlChange::controller(channel, ControlChange::gainOffset), int(gain));
}

void OrvanMIDI::set(OrvanSwitch s, int channel, bool on)
{
    if (!acceptsRequests() || channel < 0 || channel >= m_channels.size())
        return;
    ChannelStates next = m_channels;
    ChannelState& c = next[channel];
    c.setOn(s, on);
    if (s == OrvanSwitch::di) {
        // The unit moves the gain to the bottom of the new range by itself; no gain message.
        c.gainValue = on ? kDIGainLowest : kMicGainLowest;
        c.gainFine = 0;
    }
    setChannels(std::move(next));

    send(ControlChange::controller(channel, s), ControlChange::switchValue(s, on));
}

// --- Incoming ---------------------------------------------------------------------------------

void OrvanMIDI::receive(int controller, int value)
{
    const int channel = controller / ControlChange::kControllersPerChannel;
    const int function = controller % ControlChange::kControllersPerChannel;
    if (channel >= m_channels.size())
        return;

    if (function == ControlChange::gainOffset) {
        receiveGain(channel, value);
        return;
    }
    const auto s = ControlChange::switchAt(function);
    if (!s || (*s == OrvanSwitch::di && !m_spec.hasDI) || (*s == OrvanSwitch::hpf && !m_spec.hasHPF))
        return;
    ChannelStates next = m_channels;
    next[channel].setOn(*s, value > 0);
    setChannels(std::move(next));
}

void OrvanMIDI::receiveGain(int channel, qint64 reported)
{
    ChannelStates next = m_channels;
    ChannelState& c = next[channel];

    const auto& sent = m_lastSentGain[std::size_t(channel)];
    const bool isEcho = sent && sent->value == reported && m_clock.now() - sent->time < kEchoWindow;
    if (isEcho) {
        // The unit confirming our own send: not a detent, so the fine position stays.
        c.gainValue = reported;
    } else if (!m_spec.fineTracking) {
        c.gainValue = reported;
        c.gainFine = 0;
    } else {
        // The unit reports only the 3 dB step but repeats it on every 1 dB detent: a new step puts
        // the fine position at the edge the knob came from, a repeat moves it one detent further.
        qint64 fine = 0;
        if (c.gainValue) {
            const qint64 previous = *c.gainValue;
            const auto ch = std::size_t(channel);
            if (previous < reported) {
                m_gainRising[ch] = true;
                fine = 0;
            } else if (previous > reported) {
                m_gainRising[ch] = false;
                fine = kFineTop;
            } else {
                fine = std::clamp<qint64>(c.gainFine + (m_gainRising[ch] ? 1 : -1), 0, kFineTop);
            }
        }
        c.gainValue = reported;
        c.gainFine = fine;
    }
    setChannels(std::move(next));
}

// --- Demo -------------------------------------------------------------------------------------

void OrvanMIDI::applyDemo(bool on)
{
    if (on) {
        if (!m_hardwarePresent)
            loadDemoState(); // a present unit never shows demo state
        return;
    }
    if (m_demoLoaded) {
        m_demoLoaded = false;
        resetChannels();
        setIsConnected(m_hardwarePresent);
    }
}

void OrvanMIDI::loadDemoState()
{
    m_demoLoaded = true;
    setIsConnected(true);
    setChannels(demoSamples(m_spec.title));
}

// --- Published fields -------------------------------------------------------------------------

void OrvanMIDI::resetChannels()
{
    setChannels(defaultChannels(m_spec.channelCount));
}

} // namespace orvan
