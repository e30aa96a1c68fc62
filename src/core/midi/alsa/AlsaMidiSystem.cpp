#include "AlsaMidiSystem.h"

#include "AlsaEvents.h"

#include <QSocketNotifier>
#include <alsa/asoundlib.h>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace orvan {

namespace {

constexpr char kSequencerDevice[] = "/dev/snd/seq";
constexpr char kSequencerName[] = "default";
// The kernel's per-client limit: lets a flood wait for the main loop without losing events.
constexpr int kInputPoolEvents = 2000;
constexpr std::size_t kInputBufferBytes = 256 * 1024;

// Endpoint refs pack the sequencer address; +1 keeps 0 meaning "none".
constexpr int kPortBits = 8;
// The ALSA library reports its errors on standard error unless given a handler; ours stay silent.
void silent(const char*, int, const char*, int, const char*, ...) {}

constexpr MidiEndpointRef endpointRef(int client, int port)
{
    return (MidiEndpointRef(client) << kPortBits | MidiEndpointRef(port)) + 1;
}
constexpr snd_seq_addr_t addressOf(MidiEndpointRef ref)
{
    const MidiEndpointRef packed = ref - 1;
    return {quint8(packed >> kPortBits), quint8(packed & ((1u << kPortBits) - 1))};
}

} // namespace

AlsaMidiSystem::AlsaMidiSystem()
{
    snd_lib_error_set_handler(silent);
}

AlsaMidiSystem::~AlsaMidiSystem()
{
    for (auto& c : m_table.clients()) {
        c->notifiers.clear();
        if (c->seq)
            snd_seq_close(c->seq);
    }
}

bool AlsaMidiSystem::isOpen() const
{
    return std::ranges::any_of(m_table.clients(), [](const auto& c) { return c->seq != nullptr; });
}

// --- Opening ----------------------------------------------------------------------------------

void AlsaMidiSystem::openMissing()
{
    const bool anyMissing = std::ranges::any_of(m_table.clients(), [](const auto& c) { return c->seq == nullptr; });
    if (!anyMissing || ::access(kSequencerDevice, F_OK) != 0)
        return;
    for (auto& c : m_table.clients()) {
        if (!c->seq)
            open(*c);
    }
}

void AlsaMidiSystem::open(Client& c)
{
    if (snd_seq_open(&c.seq, kSequencerName, SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0) {
        c.seq = nullptr;
        return;
    }
    snd_seq_set_client_name(c.seq, c.name.toUtf8().constData());
    snd_seq_set_client_pool_input(c.seq, kInputPoolEvents);
    snd_seq_set_input_buffer_size(c.seq, kInputBufferBytes);
    for (const snd_seq_event_type_t type : AlsaEvents::wantedTypes())
        snd_seq_set_client_event_filter(c.seq, type);

    const int count = snd_seq_poll_descriptors_count(c.seq, POLLIN);
    std::vector<pollfd> fds(std::size_t(std::max(count, 0)));
    const int filled = snd_seq_poll_descriptors(c.seq, fds.data(), unsigned(fds.size()), POLLIN);
    for (int i = 0; i < filled; ++i) {
        auto notifier = std::make_unique<QSocketNotifier>(fds[std::size_t(i)].fd, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this, &c] { readEvents(c); });
        c.notifiers.push_back(std::move(notifier));
    }
    openPorts(c);
}

void AlsaMidiSystem::openPorts(Client& c)
{
    if (!c.seq)
        return;
    constexpr unsigned kPortType = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;
    if (c.wantsIn && c.inPort == AlsaClient::kNoPort) {
        c.inPort = snd_seq_create_simple_port(c.seq, c.inName.toUtf8().constData(),
                                              SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE, kPortType);
        if (c.inPort < 0)
            c.inPort = AlsaClient::kNoPort;
        else // hot-plug arrives on "In" as System Announce events
            snd_seq_connect_from(c.seq, c.inPort, SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE);
    }
    if (c.wantsOut && c.outPort == AlsaClient::kNoPort) {
        c.outPort = snd_seq_create_simple_port(c.seq, c.outName.toUtf8().constData(),
                                               SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ, kPortType);
        if (c.outPort < 0)
            c.outPort = AlsaClient::kNoPort;
    }
}

MidiClientRef AlsaMidiSystem::createClient(const QString& name, NotifyCallback notify)
{
    auto c = std::make_unique<Client>();
    c->name = name;
    c->notify = std::move(notify);
    Client& added = *c;
    const MidiClientRef ref = m_table.addClient(std::move(c));
    if (::access(kSequencerDevice, F_OK) == 0)
        open(added);
    return ref;
}

AlsaMidiSystem::Client* AlsaMidiSystem::clientOf(MidiPortRef port, bool isInput) const
{
    Client* c = m_table.clientOf(port, isInput);
    return c && c->seq ? c : nullptr;
}

// --- Incoming (main thread, from the socket notifier) -----------------------------------------

void AlsaMidiSystem::readEvents(Client& c)
{
    bool setupChanged = false;
    c.words.clear();
    for (;;) {
        snd_seq_event_t* event = nullptr;
        const int result = snd_seq_event_input(c.seq, &event);
        if (result == -ENOSPC)
            continue; // the kernel dropped events on overrun; read on
        if (result < 0 || !event)
            break;
        if (AlsaEvents::isSetupChange(*event))
            setupChanged = true;
        else if (const auto word = AlsaEvents::toUmpWord(*event))
            c.words.push_back(*word);
    }
    if (!c.words.empty() && c.receive)
        c.receive(c.words);
    if (setupChanged && c.notify)
        c.notify(kMidiSetupChanged);
}

// --- Enumeration ------------------------------------------------------------------------------

std::vector<AlsaPort> AlsaMidiSystem::listPorts() const
{
    std::vector<AlsaPort> ports;
    const auto it = std::ranges::find_if(m_table.clients(), [](const auto& c) { return c->seq != nullptr; });
    if (it == m_table.clients().end())
        return ports;
    snd_seq_t* seq = (*it)->seq;

    snd_seq_client_info_t* clientInfo = nullptr;
    snd_seq_port_info_t* portInfo = nullptr;
    snd_seq_client_info_alloca(&clientInfo);
    snd_seq_port_info_alloca(&portInfo);
    snd_seq_client_info_set_client(clientInfo, -1);
    while (snd_seq_query_next_client(seq, clientInfo) >= 0) {
        const int client = snd_seq_client_info_get_client(clientInfo);
        const QString clientName = QString::fromUtf8(snd_seq_client_info_get_name(clientInfo));
        snd_seq_port_info_set_client(portInfo, client);
        snd_seq_port_info_set_port(portInfo, -1);
        while (snd_seq_query_next_port(seq, portInfo) >= 0) {
            ports.push_back({client, snd_seq_port_info_get_port(portInfo), clientName,
                             QString::fromUtf8(snd_seq_port_info_get_name(portInfo)),
                             snd_seq_port_info_get_capability(portInfo)});
        }
    }
    return ports;
}

void AlsaMidiSystem::snapshot(const std::vector<AlsaPort>& ports, MidiDirection direction)
{
    auto& list = direction == MidiDirection::source ? m_sources : m_destinations;
    list.clear();
    for (const AlsaEndpoint& e : alsaEndpoints(ports, direction)) {
        const MidiEndpointRef ref = endpointRef(e.client, e.port);
        list.push_back(ref);
        m_names[ref] = e.displayName;
    }
}

void AlsaMidiSystem::refresh()
{
    // Where an absent sequencer gets looked for again.
    openMissing();
    const std::vector<AlsaPort> ports = listPorts(); // one walk of the sequencer serves both lists
    snapshot(ports, MidiDirection::source);
    snapshot(ports, MidiDirection::destination);
}

std::optional<QString> AlsaMidiSystem::displayName(MidiEndpointRef endpoint) const
{
    const auto it = m_names.find(endpoint);
    return it == m_names.end() ? std::nullopt : std::optional<QString>(it->second);
}

// --- Connections and sending ------------------------------------------------------------------

void AlsaMidiSystem::connectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    subscribe(inPort, source, true);
}

void AlsaMidiSystem::disconnectSource(MidiPortRef inPort, MidiEndpointRef source)
{
    subscribe(inPort, source, false);
}

void AlsaMidiSystem::subscribe(MidiPortRef inPort, MidiEndpointRef source, bool subscribed)
{
    Client* c = clientOf(inPort, true);
    if (!c || c->inPort == AlsaClient::kNoPort || source == 0)
        return;
    const snd_seq_addr_t a = addressOf(source);
    (subscribed ? snd_seq_connect_from : snd_seq_disconnect_from)(c->seq, c->inPort, a.client, a.port);
}

void AlsaMidiSystem::send(MidiPortRef outPort, MidiEndpointRef destination, quint32 word)
{
    Client* c = clientOf(outPort, false);
    auto event = AlsaEvents::fromUmpWord(word);
    if (!c || c->outPort == AlsaClient::kNoPort || destination == 0 || !event)
        return;
    const snd_seq_addr_t a = addressOf(destination);
    snd_seq_ev_set_source(&*event, c->outPort);
    snd_seq_ev_set_dest(&*event, a.client, a.port);
    snd_seq_ev_set_direct(&*event);
    // Non-blocking: a full queue or a vanished port drops the message instead of waiting.
    snd_seq_event_output_direct(c->seq, &*event);
}

} // namespace orvan
