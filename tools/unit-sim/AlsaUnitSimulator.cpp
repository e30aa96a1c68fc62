#include "AlsaUnitSimulator.h"

#include <QSocketNotifier>
#include <poll.h>

namespace orvan {

namespace {

constexpr char kSequencerName[] = "default";
constexpr char kPortName[] = "MIDI 1";
constexpr char kAnnouncePortName[] = "announcements";
// The largest SysEx taken as one message; the kernel's pools limit it further.
constexpr long kLargestMessage = 256 * 1024;
// The kernel's largest output pool: how many scheduled reports may wait on the queue at once.
constexpr int kOutputPoolEvents = 2000;
constexpr qint64 kNanosecondsPerMicrosecond = 1000;
constexpr qint64 kMicrosecondsPerSecond = 1000000;

void silent(const char*, int, const char*, int, const char*, ...) {}

snd_seq_real_time_t realTime(std::chrono::microseconds t)
{
    return {unsigned(t.count() / kMicrosecondsPerSecond),
            unsigned(t.count() % kMicrosecondsPerSecond * kNanosecondsPerMicrosecond)};
}

} // namespace

AlsaUnitSimulator::AlsaUnitSimulator(QString displayName, std::vector<MidiBytes::Message> script,
                                     quint32 detentMilliseconds)
    : m_displayName(std::move(displayName))
    , m_script(std::move(script))
    , m_detentMilliseconds(detentMilliseconds)
    , m_decoded(std::size_t(kLargestMessage))
    , m_stdout(stdout)
{
    snd_lib_error_set_handler(silent);
}

AlsaUnitSimulator::~AlsaUnitSimulator()
{
    m_notifiers.clear();
    if (m_encoder)
        snd_midi_event_free(m_encoder);
    if (m_decoder)
        snd_midi_event_free(m_decoder);
    if (m_seq)
        snd_seq_close(m_seq);
}

bool AlsaUnitSimulator::start()
{
    // Blocking: a flood waits for room in the kernel's pool instead of losing messages.
    if (snd_seq_open(&m_seq, kSequencerName, SND_SEQ_OPEN_DUPLEX, 0) < 0) {
        m_seq = nullptr;
        return false;
    }
    snd_seq_set_client_name(m_seq, m_displayName.toUtf8().constData());
    snd_seq_set_client_pool_output(m_seq, kOutputPoolEvents);
    snd_seq_set_input_buffer_size(m_seq, std::size_t(kLargestMessage) * 2);
    m_queue = snd_seq_alloc_named_queue(m_seq, m_displayName.toUtf8().constData());
    if (m_queue < 0 || snd_midi_event_new(kLargestMessage, &m_encoder) < 0
        || snd_midi_event_new(kLargestMessage, &m_decoder) < 0)
        return false;
    snd_midi_event_no_status(m_decoder, 1); // log every message with its status byte

    // The kernel stamps what arrives with the queue's real time: the unit's own clock.
    snd_seq_port_info_t* info = nullptr;
    snd_seq_port_info_alloca(&info);
    snd_seq_port_info_set_name(info, kPortName);
    snd_seq_port_info_set_capability(info, SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ
                                               | SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE);
    snd_seq_port_info_set_type(info, SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_HARDWARE);
    snd_seq_port_info_set_timestamping(info, 1);
    snd_seq_port_info_set_timestamp_real(info, 1);
    snd_seq_port_info_set_timestamp_queue(info, m_queue);
    if (snd_seq_create_port(m_seq, info) < 0)
        return false;
    m_port = snd_seq_port_info_get_port(info);

    // A hidden port hears the System Announce, to learn when the app attaches.
    m_announcePort = snd_seq_create_simple_port(m_seq, kAnnouncePortName,
                                                SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT,
                                                SND_SEQ_PORT_TYPE_APPLICATION);
    if (m_announcePort < 0
        || snd_seq_connect_from(m_seq, m_announcePort, SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE) < 0)
        return false;
    snd_seq_control_queue(m_seq, m_queue, SND_SEQ_EVENT_START, 0, nullptr);
    snd_seq_drain_output(m_seq);

    const int count = snd_seq_poll_descriptors_count(m_seq, POLLIN);
    std::vector<pollfd> fds(std::size_t(std::max(count, 0)));
    const int filled = snd_seq_poll_descriptors(m_seq, fds.data(), unsigned(fds.size()), POLLIN);
    for (int i = 0; i < filled; ++i) {
        auto notifier = std::make_unique<QSocketNotifier>(fds[std::size_t(i)].fd, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] { readEvents(); });
        m_notifiers.push_back(std::move(notifier));
    }
    // An app that attached between the unit's port appearing and the announce port listening was
    // never announced to us: ask the kernel instead.
    if (hasReader())
        playScript();
    m_stdout << "ready " << m_displayName << ' ' << snd_seq_client_id(m_seq) << ':' << m_port << Qt::endl;
    return true;
}

bool AlsaUnitSimulator::hasReader() const
{
    snd_seq_query_subscribe_t* query = nullptr;
    snd_seq_query_subscribe_alloca(&query);
    snd_seq_addr_t self{};
    self.client = static_cast<unsigned char>(snd_seq_client_id(m_seq));
    self.port = static_cast<unsigned char>(m_port);
    snd_seq_query_subscribe_set_root(query, &self);
    snd_seq_query_subscribe_set_type(query, SND_SEQ_QUERY_SUBS_READ);
    snd_seq_query_subscribe_set_index(query, 0);
    return snd_seq_query_port_subscribers(m_seq, query) == 0;
}

void AlsaUnitSimulator::readEvents()
{
    while (snd_seq_event_input_pending(m_seq, 1) > 0) {
        snd_seq_event_t* event = nullptr;
        if (snd_seq_event_input(m_seq, &event) < 0 || !event)
            continue; // an overrun is reported once; read on
        if (event->dest.port == m_announcePort) {
            if (event->type == SND_SEQ_EVENT_PORT_SUBSCRIBED && event->data.connect.sender.client == snd_seq_client_id(m_seq)
                && event->data.connect.sender.port == m_port)
                playScript();
            continue;
        }
        log(*event);
        if (event->type == SND_SEQ_EVENT_CONTROLLER) {
            snd_seq_event_t echo = *event;
            output(echo, std::chrono::microseconds(0));
        }
    }
}

// One line per message: "<microseconds> <bytes in hex>".
void AlsaUnitSimulator::log(const snd_seq_event_t& event)
{
    snd_midi_event_reset_decode(m_decoder);
    const long size = snd_midi_event_decode(m_decoder, m_decoded.data(), long(m_decoded.size()), &event);
    if (size <= 0)
        return;
    m_stdout << qint64(event.time.time.tv_sec) * kMicrosecondsPerSecond
            + event.time.time.tv_nsec / kNanosecondsPerMicrosecond;
    for (long b = 0; b < size; ++b)
        m_stdout << ' ' << QString::asprintf("%02x", m_decoded[std::size_t(b)]);
    m_stdout << Qt::endl;
}

void AlsaUnitSimulator::playScript()
{
    if (m_scriptPlayed)
        return;
    m_scriptPlayed = true;
    const auto detent = std::chrono::milliseconds(m_detentMilliseconds);
    auto at = std::chrono::microseconds(detent);
    for (const MidiBytes::Message& report : m_script) {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        snd_midi_event_reset_encode(m_encoder);
        if (snd_midi_event_encode(m_encoder, report.data(), long(report.size()), &event) > 0
            && event.type != SND_SEQ_EVENT_NONE)
            output(event, at);
        at += detent;
    }
}

bool AlsaUnitSimulator::play(const QByteArray& bytes, std::chrono::microseconds spacing)
{
    snd_midi_event_reset_encode(m_encoder);
    auto at = std::chrono::microseconds(0);
    for (const char byte : bytes) {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        if (snd_midi_event_encode_byte(m_encoder, static_cast<unsigned char>(byte), &event) == 1
            && event.type != SND_SEQ_EVENT_NONE) {
            output(event, at);
            at += spacing;
        }
    }
    return true;
}

// To every subscriber of the unit's port: now, or `at` from now on the unit's queue.
void AlsaUnitSimulator::output(snd_seq_event_t& event, std::chrono::microseconds at)
{
    snd_seq_ev_set_source(&event, m_port);
    snd_seq_ev_set_subs(&event);
    if (at.count() == 0) {
        snd_seq_ev_set_direct(&event);
    } else {
        const snd_seq_real_time_t time = realTime(at);
        snd_seq_ev_schedule_real(&event, m_queue, 1, &time);
    }
    // One write per message: one the kernel refuses (a SysEx beyond its pool) is dropped alone
    // instead of blocking the messages behind it.
    snd_seq_event_output_direct(m_seq, &event);
}

} // namespace orvan
