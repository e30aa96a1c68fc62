#pragma once

#include <array>
#include <cstdint>

namespace orvan {

/// The on/off functions of a channel. Each names the ChannelState field of the same name.
enum class OrvanSwitch : std::uint8_t { pad, phantom, polarity, mute, di, hpf };

/// Every switch, in declaration order.
inline constexpr std::array<OrvanSwitch, 6> allSwitches{
    OrvanSwitch::pad, OrvanSwitch::phantom, OrvanSwitch::polarity,
    OrvanSwitch::mute, OrvanSwitch::di, OrvanSwitch::hpf};

const char* switchName(OrvanSwitch s);

} // namespace orvan
