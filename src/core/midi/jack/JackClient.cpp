#include "JackClient.h"
#include "Uncancellable.h"

#include "../MidiBytes.h"

#include <jack/metadata.h>
#include <jack/midiport.h>
#include <unistd.h>

namespace orvan {

namespace {

constexpr std::size_t kWordSize = sizeof(quint32);
// Incoming: a second of a 10,000 messages-per-second flood waits here if the main loop is busy.
constexpr std::size_t kIncomingWords = std::size_t(1) << 16;
// Outgoing: far more than a whole unit's state, sent in one go.
constexpr std::size_t kOutgoingWords = std::size_t(1) << 12;
constexpr jack_nframes_t kFirstFrame = 0;

// --- JACK's real-time thread: ring buffers and one eventfd write only. --------------------------

void receive(jack_port_t* in, jack_nframes_t frames, JackClient& c)
{
    void* buffer = jack_port_get_buffer(in, frames);
    const jack_nframes_t count = jack_midi_get_event_count(buffer);
    bool received = false;
    for (jack_nframes_t i = 0; i < count; ++i) {
        jack_midi_event_t event;
        if (jack_midi_event_get(&event, buffer, i) != 0)
            continue;
        // One event may carry several messages (running status, realtime bytes, SysEx).
        MidiBytes::forEachControlChange(std::span<const quint8>(event.buffer, event.size), [&](quint32 word) {
            if (jack_ringbuffer_write_space(c.incoming) < kWordSize) {
                c.dropped.fetch_add(1, std::memory_order_relaxed); // the main thread fell a whole ring buffer behind
                return;
            }
            jack_ringbuffer_write(c.incoming, reinterpret_cast<const char*>(&word), kWordSize);
            received = true;
        });
    }
    if (received)
        c.wake->raise();
}

void transmit(jack_port_t* out, jack_nframes_t frames, JackClient& c)
{
    void* buffer = jack_port_get_buffer(out, frames);
    jack_midi_clear_buffer(buffer);
    const jack_nframes_t cycleStart = jack_last_frame_time(c.handle);
    jack_nframes_t lastOffset = kFirstFrame;
    while (jack_ringbuffer_read_space(c.outgoing) >= sizeof(OutgoingMessage)) {
        OutgoingMessage message{};
        jack_ringbuffer_peek(c.outgoing, reinterpret_cast<char*>(&message), sizeof message);
        // Each message leaves a fixed delay after it was sent, at its own frame: the delay covers
        // a newly wired connection, and being the same for every message it keeps the pacing the
        // main thread gave them. A late one goes at once, in order.
        const auto ahead = qint32(message.due - cycleStart);
        if (ahead >= qint32(frames))
            break;
        const jack_nframes_t offset = std::max<jack_nframes_t>(lastOffset, jack_nframes_t(std::max(ahead, 0)));
        MidiBytes::Message bytes{};
        const std::size_t size = MidiBytes::toBytes(message.word, bytes);
        // A full port buffer leaves the rest for the next cycle.
        if (size > 0 && jack_midi_event_write(buffer, offset, bytes.data(), size) != 0)
            break;
        lastOffset = offset;
        jack_ringbuffer_read_advance(c.outgoing, sizeof message);
    }
}

int onProcess(jack_nframes_t frames, void* arg)
{
    return uncancellable([&] {
        auto& c = *static_cast<JackClient*>(arg);
        if (jack_port_t* in = c.in.load(std::memory_order_acquire))
            receive(in, frames, c);
        if (jack_port_t* out = c.out.load(std::memory_order_acquire))
            transmit(out, frames, c);
        return 0;
    });
}

// --- JACK's notification thread: flag and wake only. --------------------------------------------

/// Raises `flag` and wakes the main thread; remembers which thread JACK notifies this client on.
void notified(JackClient* c, std::atomic<bool>& flag)
{
    uncancellable([&] {
        if (c->notifyThread.load(std::memory_order_relaxed) == 0)
            c->notifyThread.store(::gettid(), std::memory_order_relaxed);
        flag.store(true, std::memory_order_release);
        c->wake->raise();
    });
}

/// A port or client came or went, or a name changed: the engine rescans.
void setupChanged(void* arg)
{
    auto* c = static_cast<JackClient*>(arg);
    notified(c, c->setupChanged);
}

void onClientRegistration(const char* name, int registered, void* arg)
{
    auto* c = static_cast<JackClient*>(arg);
    if (!registered) {
        uncancellable([&] {
            const std::string* awaited = c->awaitedGone.load(std::memory_order_acquire);
            if (awaited && *awaited == name)
                c->heardGone.store(true, std::memory_order_release);
        });
    }
    setupChanged(arg);
}

// A client's activation reorders the graph; only then can a port it registered before be connected.
int onGraphOrder(void* arg)
{
    auto* c = static_cast<JackClient*>(arg);
    notified(c, c->graphChanged);
    return 0;
}

// Whose connection went is not worth finding out here: disconnections are rare, and the main
// thread looks at our own wiring once for any of them.
void onPortConnect(jack_port_id_t, jack_port_id_t, int connected, void* arg)
{
    auto* c = static_cast<JackClient*>(arg);
    if (!connected)
        notified(c, c->connectionGone);
}

// On the notification thread or on the process thread, whichever notices first; so it does not
// tell which thread notifies.
void onShutdown(void* arg)
{
    auto* c = static_cast<JackClient*>(arg);
    // Nothing may call into the client from here: the main thread stops using it and the
    // worker closes it.
    uncancellable([c] {
        c->serverGone.store(true, std::memory_order_release);
        c->wake->raise();
    });
}

} // namespace

JackClient::JackClient(const QString& clientName, MidiSystem::NotifyCallback notifyCallback)
    : incoming(jack_ringbuffer_create(kIncomingWords * kWordSize))
    , outgoing(jack_ringbuffer_create(kOutgoingWords * sizeof(OutgoingMessage)))
{
    name = clientName;
    notify = std::move(notifyCallback);
    // Locked in memory so the real-time thread never waits on a page fault.
    jack_ringbuffer_mlock(incoming);
    jack_ringbuffer_mlock(outgoing);
}

JackClient::~JackClient()
{
    wake.reset();
    jack_ringbuffer_free(incoming);
    jack_ringbuffer_free(outgoing);
}

void JackClient::registerPorts()
{
    if (wantsIn && !in)
        in = jack_port_register(handle, inName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    if (wantsOut && !out)
        out = jack_port_register(handle, outName.toUtf8().constData(), JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
}

void JackClient::takeIncoming()
{
    words.clear();
    while (jack_ringbuffer_read_space(incoming) >= kWordSize) {
        quint32 word = 0;
        jack_ringbuffer_read(incoming, reinterpret_cast<char*>(&word), kWordSize);
        words.push_back(word);
    }
}

void JackClient::queueOutgoing(const OutgoingMessage& message)
{
    if (jack_ringbuffer_write_space(outgoing) >= sizeof message)
        jack_ringbuffer_write(outgoing, reinterpret_cast<const char*>(&message), sizeof message);
}

void setCallbacks(jack_client_t* handle, JackClient& c)
{
    jack_set_process_callback(handle, onProcess, &c);
    jack_set_port_registration_callback(handle, [](jack_port_id_t, int, void* arg) { setupChanged(arg); }, &c);
    jack_set_client_registration_callback(handle, onClientRegistration, &c);
    jack_set_port_rename_callback(
        handle, [](jack_port_id_t, const char*, const char*, void* arg) { setupChanged(arg); }, &c);
    jack_set_property_change_callback(
        handle, [](jack_uuid_t, const char*, jack_property_change_t, void* arg) { setupChanged(arg); }, &c);
    jack_set_graph_order_callback(handle, onGraphOrder, &c);
    jack_set_port_connect_callback(handle, onPortConnect, &c);
    jack_on_shutdown(handle, onShutdown, &c);
}

} // namespace orvan
