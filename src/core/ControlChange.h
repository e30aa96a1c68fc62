#pragma once

#include "OrvanSwitch.h"

#include <QtGlobal>
#include <optional>
#include <span>
#include <vector>

/// The units' wire protocol: MIDI 1.0 Control Change, one block of 16 controllers per channel.
namespace orvan::ControlChange {

/// Controller offsets inside a channel's block of 16.
enum Offset : int {
    diOffset = 0,
    hpfOffset = 1,
    padOffset = 2,
    phantomOffset = 4,
    polarityOffset = 5,
    muteOffset = 7,
    gainOffset = 9,
};

inline constexpr int kControllersPerChannel = 16;
inline constexpr quint8 kStatusOnChannel1 = 0xB0;
inline constexpr quint8 kSwitchOnValue = 127;
inline constexpr quint8 kDIOnValue = 2; // DI alone uses 2 for on; every other switch 127
inline constexpr quint8 kOffValue = 0;

int offset(OrvanSwitch s);

/// The switch at a controller offset, if any (gain and unused offsets give none).
std::optional<OrvanSwitch> switchAt(int offset);

/// 16 x channel + offset.
constexpr int controller(int channel, int offset) { return kControllersPerChannel * channel + offset; }
inline int controller(int channel, OrvanSwitch s) { return controller(channel, offset(s)); }

/// The value a switch is sent with.
quint8 switchValue(OrvanSwitch s, bool on);

/// One Control Change on MIDI channel 1, group 0, as a Universal MIDI Packet word (message type 2).
constexpr quint32 umpWord(quint8 controller, quint8 value)
{
    return 0x20000000u | (quint32(kStatusOnChannel1) << 16) | (quint32(controller) << 8) | value;
}

/// A MIDI 1.0 channel voice message taken out of a UMP word.
struct Triple {
    quint8 status = 0;
    quint8 data1 = 0;
    quint8 data2 = 0;
    bool operator==(const Triple&) const = default;
    bool isControlChange() const { return (status & 0xF0) == 0xB0; }
};

/// Every word whose message type (top four bits) is 2 becomes one triple; other words are skipped
/// one word at a time. Channel and group are kept in the status and not looked at further.
std::vector<Triple> parseUmpWords(std::span<const quint32> words);

} // namespace orvan::ControlChange
