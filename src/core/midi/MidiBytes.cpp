#include "MidiBytes.h"

namespace orvan::MidiBytes {

namespace {

constexpr quint32 kChannelVoiceType = 0x2;
constexpr quint8 kStatusBit = 0x80;
constexpr quint8 kDataMask = 0x7F;
constexpr quint8 kControlChange = 0xB0;
constexpr quint8 kProgramChange = 0xC0;
constexpr quint8 kChannelPressure = 0xD0;
constexpr quint8 kSystem = 0xF0; // not a channel voice message
constexpr quint8 kKindMask = 0xF0;
constexpr quint8 kChannelMask = 0x0F;

} // namespace

quint32 controlChangeWord(int midiChannel, int controller, int value) noexcept
{
    const quint32 status = kControlChange | (quint32(midiChannel) & kChannelMask);
    return (kChannelVoiceType << 28) | (status << 16) | ((quint32(controller) & kDataMask) << 8)
        | (quint32(value) & kDataMask);
}

std::optional<quint32> controlChangeWord(std::span<const quint8> bytes) noexcept
{
    if (bytes.size() < kMaxMessageSize || (bytes[0] & kKindMask) != kControlChange)
        return std::nullopt;
    if ((bytes[1] & kStatusBit) || (bytes[2] & kStatusBit))
        return std::nullopt;
    return controlChangeWord(bytes[0] & kChannelMask, bytes[1], bytes[2]);
}

std::size_t toBytes(quint32 word, Message& out) noexcept
{
    if ((word >> 28) != kChannelVoiceType)
        return 0;
    out[0] = quint8(word >> 16);
    out[1] = quint8(word >> 8) & kDataMask;
    out[2] = quint8(word) & kDataMask;
    const quint8 kind = out[0] & kKindMask;
    if (!(out[0] & kStatusBit) || kind == kSystem)
        return 0;
    return kind == kProgramChange || kind == kChannelPressure ? 2 : kMaxMessageSize;
}

} // namespace orvan::MidiBytes
