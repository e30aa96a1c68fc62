#pragma once

#include <QtGlobal>
#include <optional>

/// The MIDI 1.0 words every part of the app shares: status bytes and their nibbles, data bytes,
/// and the Universal MIDI Packet word that carries one channel voice message between the MIDI
/// systems and the engines. Everything that builds or reads a word does it here, so a slip in a
/// shift or a mask can only happen once. Constexpr and allocation-free: safe on a real-time thread.
namespace orvan::Midi {

// --- Status bytes -------------------------------------------------------------------------------

inline constexpr quint8 kStatusBit = 0x80; ///< set on status bytes, clear on data bytes
inline constexpr quint8 kKindMask = 0xF0;  ///< a channel status's kind (its upper nibble)
inline constexpr quint8 kChannelMask = 0x0F;
inline constexpr quint8 kDataMask = 0x7F;  ///< a data byte's seven bits

inline constexpr quint8 kControlChange = 0xB0;
inline constexpr quint8 kProgramChange = 0xC0;
inline constexpr quint8 kChannelPressure = 0xD0;

inline constexpr quint8 kSystemFirst = 0xF0; ///< from here on a status belongs to no channel
inline constexpr quint8 kSysExStart = 0xF0;
inline constexpr quint8 kTimeCodeQuarterFrame = 0xF1;
inline constexpr quint8 kSongPosition = 0xF2;
inline constexpr quint8 kSongSelect = 0xF3;
inline constexpr quint8 kSysExEnd = 0xF7;
inline constexpr quint8 kRealtimeFirst = 0xF8; ///< realtime bytes may sit anywhere, even inside a message

constexpr bool isStatus(quint8 byte) { return byte & kStatusBit; }
constexpr bool isChannelStatus(quint8 byte) { return isStatus(byte) && byte < kSystemFirst; }
constexpr quint8 kindOf(quint8 status) { return status & kKindMask; }
constexpr int channelOf(quint8 status) { return status & kChannelMask; }

/// Data bytes that follow a channel status: one for program change and channel pressure, else two.
constexpr int dataBytesOf(quint8 channelStatus)
{
    const quint8 kind = kindOf(channelStatus);
    return kind == kProgramChange || kind == kChannelPressure ? 1 : 2;
}

// --- The Universal MIDI Packet word of a MIDI 1.0 channel voice message ---------------------------
// Bits 31-28 message type (2), 27-24 group, 23-16 status, 15-8 first data byte, 7-0 second.

inline constexpr quint32 kChannelVoiceType = 0x2;

/// A channel voice word taken apart; `data1` of a Control Change is its controller, `data2` its value.
struct WordParts {
    quint8 group = 0;
    quint8 status = 0;
    quint8 data1 = 0;
    quint8 data2 = 0;

    bool operator==(const WordParts&) const = default;
    bool isControlChange() const { return kindOf(status) == kControlChange; }
};

/// The one way to build a word. Group and channel keep four bits, data bytes seven.
constexpr quint32 wordOf(const WordParts& p)
{
    return (kChannelVoiceType << 28) | (quint32(p.group & kChannelMask) << 24) | (quint32(p.status) << 16)
        | (quint32(p.data1 & kDataMask) << 8) | quint32(p.data2 & kDataMask);
}

/// A Control Change on a MIDI channel (0-15) and group (0-15); channel 0, group 0 is what the units use.
constexpr quint32 controlChangeWord(int controller, int value, int channel = 0, int group = 0)
{
    return wordOf({quint8(group), quint8(kControlChange | (channel & kChannelMask)), quint8(controller), quint8(value)});
}

/// The one way to take a word apart; none unless its message type is MIDI 1.0 channel voice.
/// Data bytes come back with seven bits, as no MIDI 1.0 byte stream can carry more.
constexpr std::optional<WordParts> partsOf(quint32 word)
{
    if ((word >> 28) != kChannelVoiceType)
        return std::nullopt;
    return WordParts{quint8((word >> 24) & kChannelMask), quint8(word >> 16), quint8((word >> 8) & kDataMask),
                     quint8(word & kDataMask)};
}

} // namespace orvan::Midi
