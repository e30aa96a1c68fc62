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

/// A complete Control Change (status 0xBn and two data bytes) as a type-2 word; anything else,
/// including a truncated message or a data byte with its top bit set, gives none.
std::optional<quint32> controlChangeWord(std::span<const quint8> bytes) noexcept;

/// The bytes of a type-2 word (two for program change and channel pressure, else three); 0 when
/// the word is not a MIDI 1.0 channel voice message.
std::size_t toBytes(quint32 word, Message& out) noexcept;

} // namespace orvan::MidiBytes
