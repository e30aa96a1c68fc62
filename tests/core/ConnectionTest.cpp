#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;

class Connection : public EngineFixture {};

TEST_F(Connection, FindsTheUnitOnlyByTheExactNameOfBothEndpoints)
{
    using Names = std::vector<std::optional<QString>>;
    // -1: none. A click goes to the destination at `clickedDestination`, and nowhere else.
    struct Row { const char* what; Names sources, destinations; bool present; int attachedSource; int clickedDestination = -1; };
    const Row rows[] = {
        {"absent", {}, {}, false, -1},
        {"present", {"Orvan"}, {"Orvan"}, true, 0, 0},
        {"source only: not Linked, but its reports still show", {"Orvan"}, {}, false, 0},
        {"destination only", {}, {"Orvan"}, false, -1},
        {"unnamed endpoints are passed over", {std::nullopt, "Orvan"}, {std::nullopt, "Orvan"}, true, 1, 1},
        {"among other units", {"Dunra", "Melko", "Orvan"}, {"Orvan", "Dunra"}, true, 2, 0},
        {"of two with the same name the first wins", {"Orvan", "Orvan"}, {"Orvan", "Orvan"}, true, 0, 0},
        {"only through PipeWire's sequencer bridge", {"Midi-Bridge:Orvan:(capture_0) Orvan MIDI 1"},
         {"Orvan:(playback_0) Orvan MIDI 1"}, true, 0, 0},
        {"the kernel sequencer client beats the bridge listed before it",
         {"Orvan:(capture_0) Orvan MIDI 1", "Orvan"}, {"Orvan:(playback_0) Orvan MIDI 1", "Orvan"}, true, 1, 1},
        {"the kernel sequencer client beats the bridge listed after it",
         {"Orvan", "Orvan:(capture_0) Orvan MIDI 1"}, {"Orvan", "Orvan:(playback_0) Orvan MIDI 1"}, true, 0, 0},
        {"a bridged source is not paired with a direct destination",
         {"Orvan:(capture_0) Orvan MIDI 1"}, {"Orvan"}, false, -1},
        {"nor a direct source with a bridged destination", {"Orvan"}, {"Orvan:(playback_0) Orvan MIDI 1"}, false, 0},
    };
    for (const Row& row : rows) {
        VirtualMidiSystem world;
        std::vector<MidiEndpointRef> sources, destinations;
        for (const auto& name : row.sources)
            sources.push_back(world.addSource(name));
        for (const auto& name : row.destinations)
            destinations.push_back(world.addDestination(name));
        OrvanMIDI engine(Catalogue::orvan(), world, clock);
        engine.set(OrvanSwitch::polarity, 0, true);
        EXPECT_EQ(engine.hardwarePresent(), row.present) << row.what;
        EXPECT_EQ(engine.isConnected(), row.present) << row.what;
        for (std::size_t i = 0; i < sources.size(); ++i)
            EXPECT_EQ(world.isAttached(sources[i]), int(i) == row.attachedSource) << row.what << ", source " << i;
        std::vector<MidiEndpointRef> clicked;
        for (const auto& message : world.sent())
            clicked.push_back(message.destination);
        const auto expected = row.clickedDestination < 0 ? std::vector<MidiEndpointRef>{}
                                                          : std::vector{destinations[std::size_t(row.clickedDestination)]};
        EXPECT_EQ(clicked, expected) << row.what;
    }
}

TEST_F(Connection, FollowsTheUnitThroughSetupChangesOnTheMainThread)
{
    auto engine = makeEngine(Catalogue::orvan());
    EXPECT_EQ(midi.clientNames(), QStringList{"OrvanRCU-Orvan"});

    const auto unit = midi.addDevice("Orvan");
    EXPECT_FALSE(engine->isConnected()) << "the change is applied on the main thread, not in the callback";
    deliverPosted();
    EXPECT_TRUE(engine->isConnected());
    EXPECT_TRUE(midi.sent().empty()) << "nothing is pushed to a unit on connection";

    midi.rename(unit.destination, QStringLiteral("Orvan (old)"));
    deliverPosted();
    EXPECT_FALSE(engine->isConnected());
    midi.rename(unit.destination, QStringLiteral("Orvan"));
    deliverPosted();
    EXPECT_TRUE(engine->isConnected());
}

TEST_F(Connection, RequestsToAnAbsentOrUnverifiedUnitChangeNothingAndSendNothing)
{
    for (const DeviceSpec& spec : {Catalogue::orvan(), Catalogue::melko()}) {
        VirtualMidiSystem world;
        if (!spec.verified)
            world.addDevice(spec.portName); // plugged in, and still only listened to
        OrvanMIDI engine(spec, world, clock);

        for (int ch = 0; ch < spec.channelCount; ++ch) {
            engine.setGain(ch, 10);
            for (OrvanSwitch s : allSwitches)
                engine.set(s, ch, true);
        }
        EXPECT_TRUE(world.sent().empty()) << spec.title.toStdString();
        EXPECT_EQ(engine.channels(), ChannelStates(spec.channelCount)) << spec.title.toStdString();
    }
}
