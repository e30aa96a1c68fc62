#include "ChannelState.h"

#include "DeviceSpec.h"

#include <algorithm>

namespace orvan {

namespace {
bool ChannelState::* fieldFor(OrvanSwitch s)
{
    switch (s) {
    case OrvanSwitch::pad: return &ChannelState::pad;
    case OrvanSwitch::phantom: return &ChannelState::phantom;
    case OrvanSwitch::polarity: return &ChannelState::polarity;
    case OrvanSwitch::mute: return &ChannelState::mute;
    case OrvanSwitch::di: return &ChannelState::di;
    case OrvanSwitch::hpf: return &ChannelState::hpf;
    }
    return &ChannelState::pad;
}
} // namespace

bool ChannelState::isOn(OrvanSwitch s) const { return this->*fieldFor(s); }

void ChannelState::setOn(OrvanSwitch s, bool on) { this->*fieldFor(s) = on; }

ChannelStates defaultChannels(qint64 count)
{
    return ChannelStates(std::max<qint64>(count, 0));
}

std::optional<qint64> shownGainDecibels(const ChannelState& channel)
{
    if (!channel.gainValue)
        return std::nullopt;
    return std::min(*channel.gainValue * kDecibelsPerGainStep + channel.gainFine, kMaxShownDecibels);
}

} // namespace orvan
