#pragma once

#include "midi/MainThreadSignal.h"
#include "midi/MidiBytes.h"

#include <QByteArray>
#include <QString>
#include <QTextStream>
#include <atomic>
#include <chrono>
#include <functional>
#include <jack/jack.h>
#include <jack/ringbuffer.h>
#include <memory>
#include <vector>

namespace orvan {

/// One unit on JACK: a client with a MIDI output "out" (the unit's source) and input "in" (its
/// destination), both carrying the unit's display name as their pretty name. Every Control
/// Change received is reported straight back, in the same cycle, as the hardware does; every
/// message received is logged with its JACK frame time; scripted reports play once the app has
/// attached to "out", one every `detentFrames`. What it is told to play reaches its real-time
/// thread through a ring buffer and leaves "out", once something listens there, paced by JACK's
/// frame clock.
class UnitSimulator {
public:
    UnitSimulator(QString displayName, std::vector<MidiBytes::Message> script, quint32 detentMilliseconds);
    ~UnitSimulator();

    /// Opens the client on the running server (never starts one). False when there is none.
    bool start();

    /// The unit sends `bytes`, a MIDI byte stream (running status, realtime bytes and SysEx
    /// included), to whoever listens: at once, or one message every `spacing`. False when it does
    /// not fit in what is still waiting to be played; nothing of it is sent then.
    bool play(const QByteArray& bytes, std::chrono::microseconds spacing);

    /// Called on the main thread when the server goes away.
    std::function<void()> onServerGone;

    /// One logged message, written by the real-time thread.
    struct LogEntry {
        quint32 frame;
        quint32 size;
        MidiBytes::Message bytes;
    };

    // Used by the JACK callbacks.
    int process(quint32 frames);
    void serverGone();

private:
    /// Ahead of each message's bytes in the play ring.
    struct PlayHeader {
        quint32 size;
        quint32 delayFrames;  ///< after the message before it
        bool startsLine;      ///< the first of a play request: due now, not after a delay
    };

    void printLog();
    void playDue(void* outBuffer, jack_nframes_t cycleStart, jack_nframes_t frames, jack_nframes_t earliest);

    QString m_displayName;
    std::vector<MidiBytes::Message> m_script;
    quint32 m_detentMilliseconds;
    quint32 m_detentFrames = 0;
    jack_nframes_t m_sampleRate = 0;

    jack_client_t* m_client = nullptr;
    std::atomic<jack_port_t*> m_in{nullptr};
    std::atomic<jack_port_t*> m_out{nullptr};
    jack_ringbuffer_t* m_log = nullptr;
    std::size_t m_scriptIndex = 0;
    quint32 m_nextReportFrame = 0;
    jack_ringbuffer_t* m_plays = nullptr;
    jack_nframes_t m_lastPlayedFrame = 0;
    std::atomic<bool> m_gone{false};
    MainThreadSignal m_wake;
    QTextStream m_stdout;
};

} // namespace orvan
