#pragma once

#include "../MainThreadSignal.h"
#include "../MidiPortTable.h"
#include "RetryBackoff.h"

#include <QString>
#include <atomic>
#include <jack/jack.h>
#include <jack/ringbuffer.h>
#include <memory>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orvan {

class JackMidiSystem;

/// An outgoing message and the frame it is due at.
struct OutgoingMessage {
    quint32 word;
    jack_nframes_t due;
};

/// One JACK client of the app, with its MIDI ports "In" and "Out", and what the threads around it
/// share. The worker opens and closes it (JackClientOpener); JACK's real-time thread moves plain
/// words through its two ring buffers; JACK's notification thread only raises flags; the main
/// thread (JackMidiSystem) uses it once it is handed over.
struct JackClient : MidiClientWish {
    /// Main thread: a client with its ring buffers, locked in memory.
    JackClient(const QString& name, MidiSystem::NotifyCallback notify);
    ~JackClient();
    JackClient(const JackClient&) = delete;
    JackClient& operator=(const JackClient&) = delete;

    /// Registers the ports wanted and not registered yet: on the worker while it opens the
    /// client, on the main thread once the client is handed over.
    void registerPorts();
    /// Main thread: moves what the process callback received since the last call into `words`.
    void takeIncoming();
    /// Main thread: queues a message for the process callback; dropped when the queue is full.
    void queueOutgoing(const OutgoingMessage& message);

    // Written by the worker while it opens the client, before activation; read by the process
    // callback, and by the main thread once the client is handed over (isLive).
    jack_client_t* handle = nullptr;
    std::atomic<jack_port_t*> in{nullptr};
    std::atomic<jack_port_t*> out{nullptr};
    jack_ringbuffer_t* incoming = nullptr; // words, the process callback to the main thread
    jack_ringbuffer_t* outgoing = nullptr; // OutgoingMessages, the main thread to the process callback
    std::atomic<bool> setupChanged{false};
    std::atomic<bool> serverGone{false};
    std::atomic<bool> graphChanged{false};
    std::atomic<bool> connectionGone{false}; // some connection in the graph went, perhaps ours
    std::atomic<quint64> dropped{0}; // reports lost to a full incoming ring buffer
    std::atomic<pid_t> notifyThread{0}; // JACK's notification thread of this opening, once heard from
    // Closing in turn (JackClientOpener): the name JACK gave this opening, written by the worker
    // before activation; and, while a sibling closes, that sibling's name and whether we heard it go.
    std::string jackName;
    std::atomic<const std::string*> awaitedGone{nullptr};
    std::atomic<bool> heardGone{false};
    std::unique_ptr<MainThreadSignal> wake;

    // Main thread only.
    JackMidiSystem* owner = nullptr; // none once the system is gone and this client left behind
    std::unique_ptr<RetryBackoff> wiringRetry;
    bool isLive = false;   // open, handed over, and its server not known to be gone
    QString outWanted;     // the destination our "Out" should be wired to
    bool outWired = false; // and whether it was, when last looked at
    // Sources whose client was not yet active when we attached; retried when the graph changes.
    std::set<QString> pendingAttach;
    std::vector<quint32> words; // reused between wakes
};

/// Worker thread, before activation: hands JACK the process, notification and shutdown
/// callbacks of `client`.
void setCallbacks(jack_client_t* handle, JackClient& client);

} // namespace orvan
