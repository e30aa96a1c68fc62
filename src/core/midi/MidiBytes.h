#pragma once

#include "MidiVocabulary.h"

#include <QtGlobal>
#include <array>
#include <cstddef>
#include <span>

/// MIDI 1.0 byte messages and the Universal MIDI Packet words the engine speaks, for the systems
/// that carry bytes (JACK) rather than words. Safe on a real-time thread: no allocation.
namespace orvan::MidiBytes {

/// The longest MIDI 1.0 channel voice message.
inline constexpr std::size_t kMaxMessageSize = 3;

using Message = std::array<quint8, kMaxMessageSize>;

/// Calls `sink(word)` with the type-2 word of every complete Control Change in a byte stream, in
/// order, and skips everything else: other channel messages, SysEx of any length, system common
/// and realtime bytes (which may sit even between a Control Change's data bytes), and data with
/// no status. Running status applies: "b0 17 7f 17 7f" is two Control Changes.
template <typename Sink>
void forEachControlChange(std::span<const quint8> bytes, Sink&& sink) noexcept;

/// The bytes of a type-2 word (two for program change and channel pressure, else three); 0 when
/// the word is not a MIDI 1.0 channel voice message.
std::size_t toBytes(quint32 word, Message& out) noexcept;

template <typename Sink>
void forEachControlChange(std::span<const quint8> bytes, Sink&& sink) noexcept
{
    constexpr quint8 kNoStatus = 0;
    quint8 status = kNoStatus; // the running status; none inside SysEx or after system common
    quint8 data[2] = {};
    int have = 0;
    for (const quint8 byte : bytes) {
        if (byte >= Midi::kRealtimeFirst)
            continue; // realtime bytes may appear anywhere and change nothing
        if (Midi::isStatus(byte)) {
            // A channel status starts a message; SysEx, its end and system common cancel the
            // running status, so the data bytes that follow them are skipped.
            status = Midi::isChannelStatus(byte) ? byte : kNoStatus;
            have = 0;
            continue;
        }
        if (status == kNoStatus)
            continue;
        data[have++] = byte;
        if (have < Midi::dataBytesOf(status))
            continue;
        have = 0;
        if (Midi::kindOf(status) == Midi::kControlChange)
            sink(Midi::wordOf({0, status, data[0], data[1]}));
    }
}

} // namespace orvan::MidiBytes
