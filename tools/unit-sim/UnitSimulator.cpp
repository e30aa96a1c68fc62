#include "UnitSimulator.h"

#include "MidiStream.h"
#include "midi/jack/Uncancellable.h"

#include <jack/jack.h>
#include <jack/metadata.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace orvan {

namespace {

constexpr std::size_t kLogEntries = 4096;
// Room for what is waiting to be played: a flood of ten thousand reports, or a long SysEx.
constexpr std::size_t kPlayRingBytes = 4 * 1024 * 1024;
constexpr qint64 kMicrosecondsPerSecond = 1000000;
constexpr quint32 kMillisecondsPerSecond = 1000;
constexpr char kPrettyNameType[] = "text/plain";

// Held off cancellation like the app's own callbacks: a server stop closes us at any instruction.
int processCallback(jack_nframes_t frames, void* arg)
{
    return uncancellable([&] { return static_cast<UnitSimulator*>(arg)->process(frames); });
}

void shutdownCallback(void* arg)
{
    uncancellable([&] { static_cast<UnitSimulator*>(arg)->serverGone(); });
}

} // namespace

UnitSimulator::UnitSimulator(QString displayName, std::vector<MidiBytes::Message> script, quint32 detentMilliseconds)
    : m_displayName(std::move(displayName))
    , m_script(std::move(script))
    , m_detentMilliseconds(detentMilliseconds)
    , m_log(jack_ringbuffer_create(kLogEntries * sizeof(LogEntry)))
    , m_plays(jack_ringbuffer_create(kPlayRingBytes))
    , m_wake([this] { printLog(); })
    , m_stdout(stdout)
{
    jack_ringbuffer_mlock(m_log);
    jack_ringbuffer_mlock(m_plays);
}

UnitSimulator::~UnitSimulator()
{
    if (m_client)
        jack_client_close(m_client);
    jack_ringbuffer_free(m_log);
    jack_ringbuffer_free(m_plays);
}

bool UnitSimulator::start()
{
    jack_status_t status{};
    m_client = jack_client_open(m_displayName.toUtf8().constData(), JackNoStartServer, &status);
    if (!m_client)
        return false;
    m_sampleRate = jack_get_sample_rate(m_client);
    m_detentFrames = m_sampleRate * m_detentMilliseconds / kMillisecondsPerSecond;
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

    // Events in a cycle must be written in time order.
    jack_nframes_t lastWritten = 0;
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
        if (event.size == MidiBytes::kMaxMessageSize && Midi::kindOf(event.buffer[0]) == Midi::kControlChange
            && jack_midi_event_write(outBuffer, event.time, event.buffer, event.size) == 0)
            lastWritten = event.time;
    }
    // Like the script, what it is told to play waits for someone to listen: JACK wires a
    // reader's side some moments after the reader has found the unit.
    if (jack_port_connected(out) > 0)
        playDue(outBuffer, cycleStart, frames, lastWritten);
    if (logged)
        m_wake.raise();
    return 0;
}

// Main thread.
bool UnitSimulator::play(const QByteArray& bytes, std::chrono::microseconds spacing)
{
    const std::vector<QByteArray> messages = midiMessagesOf(bytes);
    std::size_t needed = 0;
    for (const QByteArray& message : messages)
        needed += sizeof(PlayHeader) + std::size_t(message.size());
    if (jack_ringbuffer_write_space(m_plays) < needed)
        return false;
    const auto delayFrames = quint32((spacing.count() * m_sampleRate + kMicrosecondsPerSecond / 2) / kMicrosecondsPerSecond);
    bool first = true;
    for (const QByteArray& message : messages) {
        const PlayHeader header{quint32(message.size()), delayFrames, std::exchange(first, false)};
        // The header goes first: the real-time thread takes a message only once all of it is there.
        jack_ringbuffer_write(m_plays, reinterpret_cast<const char*>(&header), sizeof header);
        jack_ringbuffer_write(m_plays, message.constData(), std::size_t(message.size()));
    }
    return true;
}

// JACK's real-time thread: writes every message of the play ring that falls due in this cycle,
// no earlier in the cycle than `earliest`. One the port has no room left for waits for the next
// cycle; one larger than any event the port takes is dropped alone, as a sequencer drops what
// exceeds its pool, so the messages behind it still go.
void UnitSimulator::playDue(void* outBuffer, jack_nframes_t cycleStart, jack_nframes_t frames, jack_nframes_t earliest)
{
    PlayHeader header{};
    while (jack_ringbuffer_peek(m_plays, reinterpret_cast<char*>(&header), sizeof header) == sizeof header
           && jack_ringbuffer_read_space(m_plays) >= sizeof header + header.size) {
        // Frame times wrap around; their differences, taken signed, do not.
        const jack_nframes_t due = header.startsLine
            ? (qint32(m_lastPlayedFrame - cycleStart) > 0 ? m_lastPlayedFrame : cycleStart)
            : m_lastPlayedFrame + header.delayFrames;
        if (qint32(due - (cycleStart + frames)) >= 0)
            return;
        const jack_nframes_t offset = std::max<jack_nframes_t>(earliest, qint32(due - cycleStart) > 0 ? due - cycleStart : 0);
        jack_midi_data_t* slot = header.size <= jack_midi_max_event_size(outBuffer)
            ? jack_midi_event_reserve(outBuffer, offset, header.size)
            : nullptr;
        if (!slot && jack_midi_get_event_count(outBuffer) > 0)
            return;
        jack_ringbuffer_read_advance(m_plays, sizeof header);
        if (slot)
            jack_ringbuffer_read(m_plays, reinterpret_cast<char*>(slot), header.size);
        else
            jack_ringbuffer_read_advance(m_plays, header.size);
        m_lastPlayedFrame = due;
        earliest = offset;
    }
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
