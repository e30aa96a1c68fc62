#include "AlsaEvents.h"

#include "../MidiBytes.h"

#include <algorithm>
#include <array>

namespace orvan::AlsaEvents {

namespace {

constexpr int kMaxDataByte = 0x7F;
constexpr quint8 kControlChange = 0xB0;
constexpr quint8 kKindMask = 0xF0;
constexpr quint8 kChannelMask = 0x0F;

constexpr std::array<snd_seq_event_type_t, 7> kWantedTypes{
    SND_SEQ_EVENT_CONTROLLER,  SND_SEQ_EVENT_CLIENT_START, SND_SEQ_EVENT_CLIENT_EXIT,  SND_SEQ_EVENT_CLIENT_CHANGE,
    SND_SEQ_EVENT_PORT_START, SND_SEQ_EVENT_PORT_EXIT,    SND_SEQ_EVENT_PORT_CHANGE,
};

} // namespace

std::optional<quint32> toUmpWord(const snd_seq_event_t& event)
{
    if (event.type != SND_SEQ_EVENT_CONTROLLER)
        return std::nullopt;
    const snd_seq_ev_ctrl_t& c = event.data.control;
    if (c.param > unsigned(kMaxDataByte) || c.value < 0 || c.value > kMaxDataByte)
        return std::nullopt;
    return MidiBytes::controlChangeWord(c.channel, int(c.param), c.value);
}

bool isSetupChange(const snd_seq_event_t& event)
{
    return event.type != SND_SEQ_EVENT_CONTROLLER && std::ranges::find(kWantedTypes, event.type) != kWantedTypes.end();
}

std::span<const snd_seq_event_type_t> wantedTypes()
{
    return kWantedTypes;
}

std::optional<snd_seq_event_t> fromUmpWord(quint32 word)
{
    MidiBytes::Message bytes{};
    if (MidiBytes::toBytes(word, bytes) != MidiBytes::kMaxMessageSize || (bytes[0] & kKindMask) != kControlChange)
        return std::nullopt;
    snd_seq_event_t event;
    snd_seq_ev_clear(&event);
    snd_seq_ev_set_controller(&event, bytes[0] & kChannelMask, bytes[1], bytes[2]);
    return event;
}

} // namespace orvan::AlsaEvents
