#include "EngineFixture.h"

#include <array>

using namespace orvan;
using namespace orvan::test;

namespace {

ChannelState sample(qint64 gain, std::initializer_list<bool ChannelState::*> on = {})
{
    ChannelState c;
    c.gainValue = gain;
    for (auto field : on)
        c.*field = true;
    return c;
}

/// The sample sets a user sees in demo mode, written out by hand.
ChannelStates samplesOf(const QString& title)
{
    using C = ChannelState;
    if (title == QLatin1String("Orvan"))
        return {sample(8), sample(10, {&C::phantom}), sample(6), sample(15, {&C::polarity}),
                sample(12, {&C::phantom}), sample(18, {&C::pad}), sample(21, {&C::mute}), sample(24)};
    if (title == QLatin1String("Dunra"))
        return {sample(9, {&C::phantom}), sample(7, {&C::di})};
    return {sample(14, {&C::phantom, &C::hpf})};
}

} // namespace

class Demo : public EngineFixture {
protected:
    using Engines = std::array<std::unique_ptr<OrvanMIDI>, 3>;

    /// The three engines in catalogue order, as the application builds them at start.
    Engines startApp(MidiSystem& world)
    {
        const auto engine = [&](const DeviceSpec& spec) { return std::make_unique<OrvanMIDI>(spec, world, clock); };
        return {engine(Catalogue::orvan()), engine(Catalogue::dunra()), engine(Catalogue::melko())};
    }
};

TEST_F(Demo, StartedWithDemoAndNoUnitEveryEngineShowsItsSamplesAndTakesChangesLocally)
{
    midi.addDestination(QStringLiteral("Melko")); // only half there: demo state, yet requests reach it
    DemoMode::shared().setActive(true);
    const auto engines = startApp(midi);

    for (const auto& engine : engines) {
        SCOPED_TRACE(engine->spec().title.toStdString());
        EXPECT_TRUE(engine->isConnected());
        EXPECT_FALSE(engine->hardwarePresent());
        EXPECT_EQ(engine->channels(), samplesOf(engine->spec().title));
        engine->setGain(0, 20);
        engine->set(OrvanSwitch::mute, 0, true);
        EXPECT_EQ(engine->channels()[0].gainValue, 20);
        EXPECT_TRUE(engine->channels()[0].mute);
    }
    ASSERT_EQ(midi.sent().size(), 2u) << "only the Melko's destination hears the requests";
    EXPECT_EQ(midi.sent()[0].word, Midi::controlChangeWord(9, 20));
    EXPECT_EQ(midi.sent()[1].word, Midi::controlChangeWord(7, 127));
}

TEST_F(Demo, AUnitPresentAtStartOrPluggedInLaterEndsDemoForEveryEngine)
{
    struct Row { const char* plugged; bool beforeStart; };
    for (const Row& row : {Row{"Orvan", true}, Row{"Dunra", true}, Row{"Melko", false}, Row{"Something else", false}}) {
        SCOPED_TRACE(row.plugged);
        VirtualMidiSystem world;
        DemoMode::shared().setActive(true);
        if (row.beforeStart)
            world.addDevice(row.plugged);
        const auto engines = startApp(world);
        if (!row.beforeStart) {
            world.addDevice(row.plugged);
            deliverPosted();
        }

        const bool aUnitCame = QLatin1String(row.plugged) != QLatin1String("Something else");
        EXPECT_EQ(DemoMode::shared().active(), !aUnitCame);
        for (const auto& engine : engines) {
            const bool present = engine->spec().portName == QLatin1String(row.plugged);
            EXPECT_EQ(engine->hardwarePresent(), present) << engine->spec().title.toStdString();
            EXPECT_EQ(engine->isConnected(), present || !aUnitCame) << engine->spec().title.toStdString();
            EXPECT_EQ(engine->channels(), aUnitCame ? ChannelStates(engine->spec().channelCount) : samplesOf(engine->spec().title));
        }
    }
}

TEST_F(Demo, SwitchedOnBesideAPresentUnitOnlyTheOthersShowSamplesAgainOnEachAssignmentAndSwitchedOffTheyReturnToDefaults)
{
    midi.addDevice("Melko");
    const auto engines = startApp(midi);
    DemoMode::shared().setActive(true);
    EXPECT_FALSE(engines[2]->demoLoaded());
    EXPECT_EQ(engines[2]->channels(), ChannelStates(1));
    engines[1]->setGain(0, 20);
    DemoMode::shared().setActive(true);
    EXPECT_EQ(engines[0]->channels(), samplesOf("Orvan"));
    EXPECT_EQ(engines[1]->channels(), samplesOf("Dunra"));

    DemoMode::shared().setActive(false);
    for (const auto& engine : engines) {
        EXPECT_EQ(engine->isConnected(), engine->hardwarePresent()) << engine->spec().title.toStdString();
        EXPECT_EQ(engine->channels(), ChannelStates(engine->spec().channelCount));
    }
}
