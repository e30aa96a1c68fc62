#include "AlsaEvents.h"

#include "../MidiVocabulary.h"

#include <algorithm>
#include <array>

namespace orvan::AlsaEvents {

namespace {

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
    if (c.param > Midi::kDataMask || c.value < 0 || c.value > Midi::kDataMask)
        return std::nullopt;
    return Midi::controlChangeWord(int(c.param), c.value, c.channel);
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
    const auto parts = Midi::partsOf(word);
    if (!parts || !parts->isControlChange())
        return std::nullopt;
    snd_seq_event_t event;
    snd_seq_ev_clear(&event);
    snd_seq_ev_set_controller(&event, Midi::channelOf(parts->status), parts->data1, parts->data2);
    return event;
}

} // namespace orvan::AlsaEvents
