// Which sequencer ports stand for a unit, and under which name the engine looks them up.
#include "midi/alsa/AlsaPortListing.h"

#include <QStringList>
#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

using namespace orvan;

namespace {

constexpr unsigned kSource = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;
constexpr unsigned kDestination = SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;
constexpr unsigned kDuplex = kSource | kDestination;

QStringList namesOf(const std::vector<AlsaEndpoint>& endpoints)
{
    QStringList names;
    for (const auto& e : endpoints)
        names << e.displayName;
    return names;
}

TEST(AlsaDisplayNames, FollowTheClientNameForOnePortAndThePortNameOtherwise)
{
    struct Row { const char* what; std::vector<AlsaPort> ports; QStringList sources, destinations; };
    const Row rows[] = {
        {"a one-port USB unit reads as its product", {{24, 0, "Orvan", "Orvan MIDI 1", kDuplex}}, {"Orvan"}, {"Orvan"}},
        {"a two-port interface names each port, prefixing the client once",
         {{28, 0, "MIDISPORT", "MIDISPORT Port A", kDuplex}, {28, 1, "MIDISPORT", "Port B", kDuplex}},
         {"MIDISPORT Port A", "MIDISPORT Port B"}, {"MIDISPORT Port A", "MIDISPORT Port B"}},
        {"one readable and one writable port: one endpoint per direction, each the client's name",
         {{30, 0, "Dunra", "out", kSource}, {30, 1, "in", "in", kDestination}}, {"Dunra"}, {"in"}},
        {"readable without subscribable is no source", {{31, 0, "Melko", "Melko MIDI 1", SND_SEQ_PORT_CAP_READ | kDestination}}, {}, {"Melko"}},
        {"a port marked no-export is never taken", {{32, 0, "Orvan", "Orvan MIDI 1", kDuplex | SND_SEQ_PORT_CAP_NO_EXPORT}}, {}, {}},
        {"our own clients and the system client are never taken",
         {{0, 1, "System", "Announce", kSource}, {128, 0, "OrvanRCU-Orvan", "In", kDestination}, {128, 1, "OrvanRCU-Orvan", "Out", kSource}}, {}, {}},
        {"a no-export sibling does not count against the one-port rule",
         {{33, 0, "Orvan", "Orvan MIDI 1", kDuplex}, {33, 1, "Orvan", "Orvan ctl", kDuplex | SND_SEQ_PORT_CAP_NO_EXPORT}}, {"Orvan"}, {"Orvan"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(namesOf(alsaEndpoints(row.ports, MidiDirection::source)), row.sources) << row.what;
        EXPECT_EQ(namesOf(alsaEndpoints(row.ports, MidiDirection::destination)), row.destinations) << row.what;
    }
}

} // namespace
