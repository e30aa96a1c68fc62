#pragma once

#include "midi/MidiBytes.h"

#include <QByteArray>
#include <QString>
#include <QTextStream>
#include <alsa/asoundlib.h>
#include <chrono>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace orvan {

/// One unit on the ALSA sequencer, seen as a class-compliant USB unit is: a client named after the
/// unit with one port that reads and writes. Every Control Change received is reported straight
/// back, as the hardware does; every message received is logged, stamped by the kernel on arrival
/// in microseconds of the simulator's own queue; scripted reports play once the app has attached to
/// the port, one every detent. Runs on the main loop; no thread.
class AlsaUnitSimulator {
public:
    AlsaUnitSimulator(QString displayName, std::vector<MidiBytes::Message> script, quint32 detentMilliseconds);
    ~AlsaUnitSimulator();
    AlsaUnitSimulator(const AlsaUnitSimulator&) = delete;
    AlsaUnitSimulator& operator=(const AlsaUnitSimulator&) = delete;

    /// Opens the client and its port. False when there is no sequencer.
    bool start();

    /// The unit sends `bytes`, a MIDI byte stream (running status, realtime bytes and SysEx
    /// included), to whoever listens: at once, or one message every `spacing` on the queue.
    /// Always true: the kernel takes what it can.
    bool play(const QByteArray& bytes, std::chrono::microseconds spacing);

private:
    void readEvents();
    void log(const snd_seq_event_t& event);
    /// Whether anyone reads the unit's port already.
    bool hasReader() const;
    void playScript();
    void output(snd_seq_event_t& event, std::chrono::microseconds at);

    QString m_displayName;
    std::vector<MidiBytes::Message> m_script;
    quint32 m_detentMilliseconds;
    bool m_scriptPlayed = false;

    snd_seq_t* m_seq = nullptr;
    int m_port = -1;
    int m_announcePort = -1;
    int m_queue = -1;
    snd_midi_event_t* m_encoder = nullptr;
    snd_midi_event_t* m_decoder = nullptr;
    std::vector<unsigned char> m_decoded;
    std::vector<std::unique_ptr<QSocketNotifier>> m_notifiers;
    QTextStream m_stdout;
};

} // namespace orvan
