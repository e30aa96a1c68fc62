#pragma once

#include "midi/MidiBytes.h"

#include <QString>
#include <optional>
#include <vector>

namespace orvan {

/// A knob turn on one channel, from one gain in dB to another.
struct KnobTurn {
    int channel = 0;
    int fromDecibels = 0;
    int toDecibels = 0;
};

/// Parses "CHANNEL:FROM_DB:TO_DB" (channel counted from 0); none for anything else.
std::optional<KnobTurn> parseKnobTurn(const QString& text);

/// The reports a unit sends while its knob turns: one per 1 dB detent after the start, each
/// carrying only the coarse gain step (dB / 3) on the channel's gain controller.
std::vector<MidiBytes::Message> knobReports(const KnobTurn& turn);

} // namespace orvan
