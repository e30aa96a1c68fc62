#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;

class Connection : public EngineFixture {};

TEST_F(Connection, CreatesItsClientAndPortsUnderTheUnitsName)
{
    auto engine = makeEngine(Catalogue::dunra());
    EXPECT_EQ(midi.clientNames(), QStringList{"OrvanRCU-Dunra"});
}

TEST_F(Connection, FindsTheUnitOnlyByTheExactNameOfBothEndpoints)
{
    struct Row {
        const char* what;
        std::vector<std::optional<QString>> sources;
        std::vector<std::optional<QString>> destinations;
        bool present;
        bool sourceAttached;
    };
    const Row rows[] = {
        {"absent", {}, {}, false, false},
        {"present", {"Orvan"}, {"Orvan"}, true, true},
        {"source only", {"Orvan"}, {}, false, true},
        {"destination only", {}, {"Orvan"}, false, false},
        {"name only starts with the port name", {"Orvan 2"}, {"Orvan 2"}, false, false},
        {"wrong case", {"orvan"}, {"ORVAN"}, false, false},
        {"unnamed endpoints are passed over", {std::nullopt, "Orvan"}, {std::nullopt, "Orvan"}, true, true},
        {"among other units", {"Dunra", "Melko", "Orvan"}, {"Orvan", "Dunra"}, true, true},
    };
    for (const Row& row : rows) {
        VirtualMidiSystem world;
        MidiEndpointRef orvanSource = 0;
        for (const auto& name : row.sources) {
            const auto ref = world.addSource(name);
            if (name == QStringLiteral("Orvan"))
                orvanSource = ref;
        }
        for (const auto& name : row.destinations)
            world.addDestination(name);

        OrvanMIDI engine(Catalogue::orvan(), world, clock);

        EXPECT_EQ(engine.hardwarePresent(), row.present) << row.what;
        EXPECT_EQ(engine.isConnected(), row.present) << row.what;
        if (orvanSource) {
            EXPECT_EQ(world.isAttached(orvanSource), row.sourceAttached) << row.what;
        }
    }
}

TEST_F(Connection, OfTwoEndpointsWithTheSameNameTheFirstWins)
{
    const auto first = midi.addDevice("Orvan");
    const auto second = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    engine->set(OrvanSwitch::mute, 0, true);
    ASSERT_EQ(midi.sent().size(), 1u);
    EXPECT_EQ(midi.sent()[0].destination, first.destination);
    EXPECT_TRUE(midi.isAttached(first.source));
    EXPECT_FALSE(midi.isAttached(second.source));
}

TEST_F(Connection, AUnitPluggedInLaterIsFoundThroughTheSetupChangedNotification)
{
    auto engine = makeEngine(Catalogue::orvan());
    ASSERT_FALSE(engine->isConnected());

    midi.addDevice("Orvan");
    EXPECT_FALSE(engine->isConnected()) << "the change is applied on the main thread, not in the callback";
    deliverPosted();

    EXPECT_TRUE(engine->isConnected());
    EXPECT_TRUE(engine->hardwarePresent());
    EXPECT_TRUE(midi.sent().empty()) << "nothing is pushed to a unit on connection";
}

TEST_F(Connection, AnUnpluggedUnitResetsItsChannelsAndInference)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    engine->setGain(0, 12);
    report(unit, 23, 127);       // channel 2 muted at the unit
    report(unit, 9 + 16 * 3, 9); // channel 4 reported at 9

    midi.removeDevice(unit);
    deliverPosted();

    EXPECT_FALSE(engine->isConnected());
    EXPECT_EQ(engine->channels(), defaultChannels(8));

    // Plugged back in: inference starts afresh (a first report lands at fine 0 and keeps rising).
    const auto again = midi.addDevice("Orvan");
    deliverPosted();
    report(again, 9, 12); // would be an echo of the old send if lastSentGain had survived
    report(again, 9, 12);
    EXPECT_EQ(engine->channels()[0].gainFine, 1);
}

TEST_F(Connection, ARenamedEndpointIsLostAndFoundAgain)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());

    midi.rename(unit.destination, QStringLiteral("Orvan (old)"));
    deliverPosted();
    EXPECT_FALSE(engine->isConnected());

    midi.rename(unit.destination, QStringLiteral("Orvan"));
    deliverPosted();
    EXPECT_TRUE(engine->isConnected());
}

TEST_F(Connection, AHalfPresentUnitsReportsStillReachTheChannels)
{
    const auto source = midi.addSource(QStringLiteral("Orvan"));
    auto engine = makeEngine(Catalogue::orvan());
    ASSERT_FALSE(engine->isConnected());

    midi.injectControlChange(source, 7, 127);
    deliverPosted();

    EXPECT_TRUE(engine->channels()[0].mute);
}

TEST_F(Connection, WithNoMidiSystemTheEngineFindsNothingAndSendsNothing)
{
    midi.setUnavailable(true);
    midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    engine->connect();
    engine->setGain(0, 10);
    engine->set(OrvanSwitch::phantom, 0, true);
    EXPECT_FALSE(engine->isConnected());
    EXPECT_TRUE(midi.sent().empty());
    EXPECT_TRUE(midi.clientNames().isEmpty());
}

TEST_F(Connection, RequestsToAnAbsentOrUnverifiedUnitChangeNothingAndSendNothing)
{
    struct Row {
        DeviceSpec spec;
        bool plugged;
    };
    for (const Row& row : {Row{Catalogue::orvan(), false}, Row{Catalogue::dunra(), false}, Row{Catalogue::melko(), true},
                           Row{Catalogue::melko(), false}}) {
        VirtualMidiSystem world;
        if (row.plugged)
            world.addDevice(row.spec.portName);
        OrvanMIDI engine(row.spec, world, clock);

        for (int ch = 0; ch < row.spec.channelCount; ++ch) {
            engine.setGain(ch, 10);
            for (OrvanSwitch s : allSwitches)
                engine.set(s, ch, true);
        }
        EXPECT_TRUE(world.sent().empty()) << row.spec.title.toStdString();
        EXPECT_EQ(engine.channels(), defaultChannels(row.spec.channelCount)) << row.spec.title.toStdString();
    }
}

TEST_F(Connection, AnEndpointThatVanishedBeforeTheSendTakesNothingAndNothingBreaks)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    midi.removeDevice(unit); // notification still queued: the engine still holds the old handles
    engine->setGain(0, 10);
    EXPECT_TRUE(midi.sent().empty());
    deliverPosted();
    EXPECT_FALSE(engine->isConnected());
}
