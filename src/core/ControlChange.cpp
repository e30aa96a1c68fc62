#include "ControlChange.h"

namespace orvan::ControlChange {

int offset(OrvanSwitch s)
{
    switch (s) {
    case OrvanSwitch::pad: return padOffset;
    case OrvanSwitch::phantom: return phantomOffset;
    case OrvanSwitch::polarity: return polarityOffset;
    case OrvanSwitch::mute: return muteOffset;
    case OrvanSwitch::di: return diOffset;
    case OrvanSwitch::hpf: return hpfOffset;
    }
    return -1;
}

std::optional<OrvanSwitch> switchAt(int offset)
{
    switch (offset) {
    case diOffset: return OrvanSwitch::di;
    case hpfOffset: return OrvanSwitch::hpf;
    case padOffset: return OrvanSwitch::pad;
    case phantomOffset: return OrvanSwitch::phantom;
    case polarityOffset: return OrvanSwitch::polarity;
    case muteOffset: return OrvanSwitch::mute;
    default: return std::nullopt;
    }
}

quint8 switchValue(OrvanSwitch s, bool on)
{
    if (!on)
        return kOffValue;
    return s == OrvanSwitch::di ? kDIOnValue : kSwitchOnValue;
}

std::vector<Midi::WordParts> parseUmpWords(std::span<const quint32> words)
{
    std::vector<Midi::WordParts> messages;
    for (quint32 w : words) {
        if (const auto parts = Midi::partsOf(w))
            messages.push_back(*parts);
    }
    return messages;
}

} // namespace orvan::ControlChange
