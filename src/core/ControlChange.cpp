#include "ControlChange.h"

#include <algorithm>
#include <utility>

namespace orvan::ControlChange {

namespace {

using SwitchOffset = std::pair<OrvanSwitch, int>;
/// The one place each switch is tied to its controller.
constexpr SwitchOffset kSwitchOffsets[] = {
    {OrvanSwitch::di, diOffset},           {OrvanSwitch::hpf, hpfOffset},           {OrvanSwitch::pad, padOffset},
    {OrvanSwitch::phantom, phantomOffset}, {OrvanSwitch::polarity, polarityOffset}, {OrvanSwitch::mute, muteOffset},
};

} // namespace

int offset(OrvanSwitch s)
{
    const auto it = std::ranges::find(kSwitchOffsets, s, &SwitchOffset::first);
    return it == std::end(kSwitchOffsets) ? -1 : it->second;
}

std::optional<OrvanSwitch> switchAt(int offset)
{
    const auto it = std::ranges::find(kSwitchOffsets, offset, &SwitchOffset::second);
    return it == std::end(kSwitchOffsets) ? std::nullopt : std::optional(it->first);
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
        if (const auto parts = Midi::partsOf(w); parts && parts->isControlChange())
            messages.push_back(*parts);
    }
    return messages;
}

} // namespace orvan::ControlChange
