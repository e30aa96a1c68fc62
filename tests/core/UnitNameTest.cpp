// Which endpoint names stand for a unit, directly or through PipeWire's sequencer bridge.
#include "UnitName.h"

#include <gtest/gtest.h>

using namespace orvan;

namespace {

struct NameRow {
    const char* endpoint;
    const char* unit;
    UnitNameMatch expected;
};

class UnitNames : public testing::TestWithParam<NameRow> {};

TEST_P(UnitNames, MatchTheUnitItselfOrItsBridgedPortsOnly)
{
    const NameRow& row = GetParam();
    EXPECT_EQ(matchUnitName(QString::fromUtf8(row.endpoint), QString::fromUtf8(row.unit)), row.expected)
        << row.endpoint << " for " << row.unit;
}

constexpr auto kNone = UnitNameMatch::none;
constexpr auto kBridged = UnitNameMatch::bridged;
constexpr auto kDirect = UnitNameMatch::direct;

INSTANTIATE_TEST_SUITE_P(Rows, UnitNames, testing::Values(
    // The kernel sequencer's client, or a native JACK unit.
    NameRow{"Orvan", "Orvan", kDirect}, NameRow{"orvan", "Orvan", kNone}, NameRow{"Orvan 2", "Orvan", kNone}, NameRow{"", "", kNone},
    // PipeWire 0.3 (Debian 12): the client's name, as the bridge's JACK port short name and in
    // full with the bridge's node name; both directions.
    NameRow{"Orvan:(capture_0) Orvan MIDI 1", "Orvan", kBridged}, NameRow{"Orvan:(playback_0) Orvan MIDI 1", "Orvan", kBridged},
    NameRow{"Midi-Bridge:Orvan:(capture_0) MIDI 1", "Orvan", kBridged},
    // Later versions: the client's name and its card number, or the card's long name.
    NameRow{"Midi-Bridge:Orvan 1:(capture_0) Orvan MIDI 1", "Orvan", kBridged},
    NameRow{"Orvan Orvan at usb-0000:00:14-0-2- high speed:(playback_0) Orvan MIDI 1", "Orvan", kBridged},
    NameRow{"Melko at usb-0000:00:14-0-3- full speed:(capture_0) Melko MIDI 1", "Melko", kBridged},
    // Newer versions: the sequencer address, the client's name and the port's name after it.
    NameRow{"Midi-Bridge:[24:0] Orvan MIDI 1 (capture)", "Orvan", kBridged}, NameRow{"[24:0] Orvan MIDI 1 (playback)", "Orvan", kBridged},
    NameRow{"Orvan MIDI 1 (capture)", "Orvan", kBridged}, NameRow{"[24:0] Orvan (capture)", "Orvan", kBridged},
    NameRow{"[25:0] Dunra MIDI 1 (capture)", "Orvan", kNone}, NameRow{"[26:0] Orvan 2 MIDI 1 (capture)", "Orvan", kNone},
    NameRow{"[27:0] OrvanX MIDI 1 (capture)", "Orvan", kNone}, NameRow{"[24:0] Orvan MIDI 1 (monitor)", "Orvan", kNone},
    // The bridge's spelling: every character but letters, digits and " /_:()[]" becomes '-'.
    NameRow{"Orvan-8:(capture_0) Orvan-8 MIDI 1", "Orvan.8", kBridged},
    // Other units and other things through the bridge.
    NameRow{"Dunra:(capture_0) Dunra MIDI 1", "Orvan", kNone}, NameRow{"Orvan 2 Pro:(capture_0) MIDI 1", "Orvan", kNone},
    NameRow{"Orvanic at usb-0000:00:14-0-2- high speed:(capture_0) MIDI 1", "Orvan", kNone},
    // Looks like the bridge, is not: no direction marker, or not at a separator.
    NameRow{"Orvan:(monitor_0) MIDI 1", "Orvan", kNone}, NameRow{"Orvan(capture_0) MIDI 1", "Orvan", kNone},
    NameRow{"Orvan:(capture_x) MIDI 1", "Orvan", kNone}));

} // namespace
