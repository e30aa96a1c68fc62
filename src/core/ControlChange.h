#pragma once

#include "OrvanSwitch.h"
#include "midi/MidiVocabulary.h"

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

/// Every MIDI 1.0 Control Change word taken apart, in order; other words are skipped one word at a
/// time, on the MIDI thread, so that only what the engine reads is handed to the main thread.
/// Channel and group are kept and not looked at further.
std::vector<Midi::WordParts> parseUmpWords(std::span<const quint32> words);

} // namespace orvan::ControlChange
