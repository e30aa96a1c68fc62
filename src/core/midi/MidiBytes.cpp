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
