#include "UnitSimulator.h"

#include <jack/jack.h>
#include <jack/metadata.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <cstdio>

namespace orvan {

namespace {

constexpr std::size_t kLogEntries = 4096;
constexpr quint8 kControlChange = 0xB0;
constexpr quint8 kKindMask = 0xF0;
constexpr quint32 kMillisecondsPerSecond = 1000;
constexpr char kPrettyNameType[] = "text/plain";

int processCallback(jack_nframes_t frames, void* arg)
{
    return static_cast<UnitSimulator*>(arg)->process(frames);
}

void shutdownCallback(void* arg)
{
    static_cast<UnitSimulator*>(arg)->serverGone();
}

} // namespace

UnitSimulator::UnitSimulator(QString displayName, std::vector<MidiBytes::Message> script, quint32 detentMilliseconds)
    : m_displayName(std::move(displayName))
    , m_script(std::move(script))
    , m_detentMilliseconds(detentMilliseconds)
    , m_log(jack_ringbuffer_create(kLogEntries * sizeof(LogEntry)))
    , m_wake([this] { printLog(); })
    , m_stdout(stdout)
{
    jack_ringbuffer_mlock(m_log);
}

UnitSimulator::~UnitSimulator()
{
    if (m_client)
        jack_client_close(m_client);
    jack_ringbuffer_free(m_log);
}

bool UnitSimulator::start()
{
    jack_status_t status{};
    m_client = jack_client_open(m_displayName.toUtf8().constData(), JackNoStartServer, &status);
    if (!m_client)
        return false;
    m_detentFrames = jack_get_sample_rate(m_client) * m_detentMilliseconds / kMillisecondsPerSecond;
    jack_set_process_callback(m_client, processCallback, this);
    jack_on_shutdown(m_client, shutdownCallback, this);
    if (jack_activate(m_client) != 0)
        return false;
    // Ports come after activation, as with a MIDI bridge whose devices come and go: whoever sees
    // them can connect to them at once.
    m_out.store(jack_port_register(m_client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0));
    m_in.store(jack_port_register(m_client, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0));
    if (!m_out || !m_in)
        return false;
    const QByteArray pretty = m_displayName.toUtf8();
    for (jack_port_t* port : {m_out.load(), m_in.load()})
        jack_set_property(m_client, jack_port_uuid(port), JACK_METADATA_PRETTY_NAME, pretty.constData(), kPrettyNameType);
    m_stdout << "ready " << jack_get_client_name(m_client) << Qt::endl;
    return true;
}

// JACK's real-time thread: no allocation, no lock, no output; the log goes through a ring buffer.
int UnitSimulator::process(quint32 frames)
{
    jack_port_t* in = m_in.load(std::memory_order_acquire);
    jack_port_t* out = m_out.load(std::memory_order_acquire);
    if (!in || !out)
        return 0;
    void* inBuffer = jack_port_get_buffer(in, frames);
    void* outBuffer = jack_port_get_buffer(out, frames);
    jack_midi_clear_buffer(outBuffer);
    const jack_nframes_t cycleStart = jack_last_frame_time(m_client);

    // Scripted reports go first, at the cycle's first frame, so echoes stay in time order after.
    if (m_scriptIndex < m_script.size() && jack_port_connected(out) > 0) {
        if (m_nextReportFrame == 0)
            m_nextReportFrame = cycleStart + m_detentFrames;
        if (qint32(cycleStart - m_nextReportFrame) >= 0) {
            jack_midi_event_write(outBuffer, 0, m_script[m_scriptIndex].data(), MidiBytes::kMaxMessageSize);
            ++m_scriptIndex;
            m_nextReportFrame += m_detentFrames;
        }
    }

    bool logged = false;
    const jack_nframes_t count = jack_midi_get_event_count(inBuffer);
    for (jack_nframes_t i = 0; i < count; ++i) {
        jack_midi_event_t event;
        if (jack_midi_event_get(&event, inBuffer, i) != 0 || event.size == 0)
            continue;
        LogEntry entry{cycleStart + event.time, quint32(event.size), {}};
        for (std::size_t b = 0; b < std::min<std::size_t>(event.size, entry.bytes.size()); ++b)
            entry.bytes[b] = event.buffer[b];
        if (jack_ringbuffer_write_space(m_log) >= sizeof entry) {
            jack_ringbuffer_write(m_log, reinterpret_cast<const char*>(&entry), sizeof entry);
            logged = true;
        }
        if (event.size == MidiBytes::kMaxMessageSize && (event.buffer[0] & kKindMask) == kControlChange)
            jack_midi_event_write(outBuffer, event.time, event.buffer, event.size);
    }
    if (logged)
        m_wake.raise();
    return 0;
}

// JACK's notification thread.
void UnitSimulator::serverGone()
{
    m_gone = true;
    m_wake.raise();
}

// Main thread: one line per message, "<frame> <bytes in hex>".
void UnitSimulator::printLog()
{
    LogEntry entry{};
    while (jack_ringbuffer_read_space(m_log) >= sizeof entry) {
        jack_ringbuffer_read(m_log, reinterpret_cast<char*>(&entry), sizeof entry);
        m_stdout << entry.frame;
        for (std::size_t b = 0; b < std::min<std::size_t>(entry.size, entry.bytes.size()); ++b)
            m_stdout << ' ' << QString::asprintf("%02x", entry.bytes[b]);
        m_stdout << Qt::endl;
    }
    if (m_gone && onServerGone)
        onServerGone();
}

} // namespace orvan
