#pragma once

#include <QtGlobal>
#include <array>
#include <cstddef>
#include <optional>
#include <span>

/// MIDI 1.0 byte messages and the Universal MIDI Packet words the engine speaks, for the systems
/// that carry bytes (JACK) rather than words. Safe on a real-time thread: no allocation.
namespace orvan::MidiBytes {

/// The longest MIDI 1.0 channel voice message.
inline constexpr std::size_t kMaxMessageSize = 3;

using Message = std::array<quint8, kMaxMessageSize>;

/// The type-2 word (MIDI 1.0 channel voice, group 0) of one Control Change; bytes above 7 bits are
/// masked off, the channel kept.
quint32 controlChangeWord(int midiChannel, int controller, int value) noexcept;

/// Calls `sink(word)` with the type-2 word of every complete Control Change in a byte stream, in
/// order, and skips everything else: other channel messages, SysEx of any length, system common
/// and realtime bytes (which may sit even between a Control Change's data bytes), and data with
/// no status. Running status applies: "b0 17 7f 17 7f" is two Control Changes.
template <typename Sink>
void forEachControlChange(std::span<const quint8> bytes, Sink&& sink) noexcept;

/// The bytes of a type-2 word (two for program change and channel pressure, else three); 0 when
/// the word is not a MIDI 1.0 channel voice message.
std::size_t toBytes(quint32 word, Message& out) noexcept;

namespace detail {

inline constexpr quint8 kStatusBit = 0x80;
inline constexpr quint8 kRealtimeFirst = 0xF8;
inline constexpr quint8 kSystemFirst = 0xF0;
inline constexpr quint8 kKindMask = 0xF0;
inline constexpr quint8 kChannelMask = 0x0F;
inline constexpr quint8 kControlChange = 0xB0;
inline constexpr quint8 kProgramChange = 0xC0;
inline constexpr quint8 kChannelPressure = 0xD0;
inline constexpr quint8 kNoStatus = 0;

/// Data bytes that follow a channel status byte.
constexpr int dataBytesOf(quint8 status) noexcept
{
    const quint8 kind = status & kKindMask;
    return kind == kProgramChange || kind == kChannelPressure ? 1 : 2;
}

} // namespace detail

template <typename Sink>
void forEachControlChange(std::span<const quint8> bytes, Sink&& sink) noexcept
{
    using namespace detail;
    quint8 status = kNoStatus; // the running status; none inside SysEx or after system common
    quint8 data[2] = {};
    int have = 0;
    for (const quint8 byte : bytes) {
        if (byte >= kRealtimeFirst)
            continue; // realtime bytes may appear anywhere and change nothing
        if (byte & kStatusBit) {
            // A channel status starts a message; SysEx, its end and system common cancel the
            // running status, so the data bytes that follow them are skipped.
            status = byte < kSystemFirst ? byte : kNoStatus;
            have = 0;
            continue;
        }
        if (status == kNoStatus)
            continue;
        data[have++] = byte;
        if (have < dataBytesOf(status))
            continue;
        have = 0;
        if ((status & kKindMask) == kControlChange)
            sink(controlChangeWord(status & kChannelMask, data[0], data[1]));
    }
}

} // namespace orvan::MidiBytes
