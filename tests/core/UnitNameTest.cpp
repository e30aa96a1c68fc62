// Which endpoint names stand for a unit, directly or through PipeWire's sequencer bridge.
#include "UnitName.h"

#include <gtest/gtest.h>

using namespace orvan;

namespace {

constexpr auto kNone = UnitNameMatch::none;
constexpr auto kBridged = UnitNameMatch::bridged;
constexpr auto kDirect = UnitNameMatch::direct;

TEST(UnitNames, MatchTheUnitItselfOrItsBridgedPortsOnly)
{
    struct Row { const char* endpoint; const char* unit; UnitNameMatch expected; };
    const Row rows[] = {
        // The kernel sequencer's client, or a native JACK unit.
        {"Orvan", "Orvan", kDirect}, {"orvan", "Orvan", kNone}, {"Orvan 2", "Orvan", kNone}, {"", "", kNone},
        // PipeWire 0.3 (Debian 12): the client's name, as the bridge's JACK port short name and in
        // full with the bridge's node name; both directions.
        {"Orvan:(capture_0) Orvan MIDI 1", "Orvan", kBridged}, {"Orvan:(playback_0) Orvan MIDI 1", "Orvan", kBridged},
        {"Midi-Bridge:Orvan:(capture_0) MIDI 1", "Orvan", kBridged},
        // Later versions: the client's name and its card number, or the card's long name.
        {"Midi-Bridge:Orvan 1:(capture_0) Orvan MIDI 1", "Orvan", kBridged},
        {"Orvan Orvan at usb-0000:00:14-0-2- high speed:(playback_0) Orvan MIDI 1", "Orvan", kBridged},
        {"Melko at usb-0000:00:14-0-3- full speed:(capture_0) Melko MIDI 1", "Melko", kBridged},
        // Newer versions: the sequencer address, the client's name and the port's name after it.
        {"Midi-Bridge:[24:0] Orvan MIDI 1 (capture)", "Orvan", kBridged}, {"[24:0] Orvan MIDI 1 (playback)", "Orvan", kBridged},
        {"Orvan MIDI 1 (capture)", "Orvan", kBridged}, {"[24:0] Orvan (capture)", "Orvan", kBridged},
        {"[25:0] Dunra MIDI 1 (capture)", "Orvan", kNone}, {"[26:0] Orvan 2 MIDI 1 (capture)", "Orvan", kNone},
        {"[27:0] OrvanX MIDI 1 (capture)", "Orvan", kNone}, {"[24:0] Orvan MIDI 1 (monitor)", "Orvan", kNone},
        // The bridge's spelling: every character but letters, digits and " /_:()[]" becomes '-'.
        {"Orvan-8:(capture_0) Orvan-8 MIDI 1", "Orvan.8", kBridged},
        // Other units and other things through the bridge.
        {"Dunra:(capture_0) Dunra MIDI 1", "Orvan", kNone}, {"Orvan 2 Pro:(capture_0) MIDI 1", "Orvan", kNone},
        {"Orvanic at usb-0000:00:14-0-2- high speed:(capture_0) MIDI 1", "Orvan", kNone},
        // Looks like the bridge, is not: no direction marker, or not at a separator.
        {"Orvan:(monitor_0) MIDI 1", "Orvan", kNone}, {"Orvan(capture_0) MIDI 1", "Orvan", kNone},
        {"Orvan:(capture_x) MIDI 1", "Orvan", kNone}
    };
    for (const Row& row : rows)
        EXPECT_EQ(matchUnitName(QString::fromUtf8(row.endpoint), QString::fromUtf8(row.unit)), row.expected) << row.endpoint << " for " << row.unit;
}

} // namespace
