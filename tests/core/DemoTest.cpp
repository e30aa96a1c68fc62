#include "DemoSamples.h"
#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;

class Demo : public EngineFixture {
protected:
    struct Engines {
        std::unique_ptr<OrvanMIDI> orvan, dunra, melko;
    };
    /// Builds the three engines in catalogue order, as the application does at start.
    Engines startApp()
    {
        Engines e;
        e.orvan = makeEngine(Catalogue::orvan());
        e.dunra = makeEngine(Catalogue::dunra());
        e.melko = makeEngine(Catalogue::melko());
        return e;
    }
};

TEST_F(Demo, StartedWithDemoAndNoUnitEveryEngineShowsItsSamplesAndNothingIsSent)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();

    for (OrvanMIDI* engine : {e.orvan.get(), e.dunra.get(), e.melko.get()}) {
        EXPECT_TRUE(engine->isConnected());
        EXPECT_FALSE(engine->hardwarePresent());
        EXPECT_EQ(engine->channels(), demoSamples(engine->spec().title));
        for (int ch = 0; ch < engine->spec().channelCount; ++ch) {
            engine->setGain(ch, 9);
            engine->set(OrvanSwitch::mute, ch, true);
        }
    }
    EXPECT_TRUE(midi.sent().empty());
}

TEST_F(Demo, SampleSetsHoldTheDocumentedSettings)
{
    const auto orvan = demoSamples("Orvan");
    ASSERT_EQ(orvan.size(), 8);
    const qint64 orvanGains[] = {8, 10, 6, 15, 12, 18, 21, 24};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(orvan[i].gainValue, orvanGains[i]);
    EXPECT_TRUE(orvan[1].phantom && orvan[4].phantom && orvan[3].polarity && orvan[5].pad && orvan[6].mute);
    EXPECT_FALSE(orvan[0].phantom || orvan[2].phantom || orvan[7].mute);

    const auto dunra = demoSamples("Dunra");
    ASSERT_EQ(dunra.size(), 2);
    EXPECT_EQ(dunra[0].gainValue, 9);
    EXPECT_TRUE(dunra[0].phantom);
    EXPECT_EQ(dunra[1].gainValue, 7);
    EXPECT_TRUE(dunra[1].di);

    const auto melko = demoSamples("Melko");
    ASSERT_EQ(melko.size(), 1);
    EXPECT_EQ(melko[0].gainValue, 14);
    EXPECT_TRUE(melko[0].phantom && melko[0].hpf);
}

TEST_F(Demo, StartedWithDemoWhileTheOrvanIsPluggedInNoEngineHoldsDemoState)
{
    midi.addDevice("Orvan");
    DemoMode::shared().setActive(true);
    auto e = startApp();

    EXPECT_FALSE(DemoMode::shared().active());
    EXPECT_TRUE(e.orvan->hardwarePresent());
    EXPECT_EQ(e.orvan->channels(), defaultChannels(8));
    EXPECT_FALSE(e.dunra->isConnected());
    EXPECT_FALSE(e.melko->isConnected());
}

TEST_F(Demo, StartedWithDemoWhileOnlyTheDunraIsPluggedInTheOrvanLeavesItsSamplesAgain)
{
    midi.addDevice("Dunra");
    DemoMode::shared().setActive(true);
    auto e = startApp();

    EXPECT_FALSE(DemoMode::shared().active());
    EXPECT_FALSE(e.orvan->isConnected());
    EXPECT_FALSE(e.orvan->demoLoaded());
    EXPECT_EQ(e.orvan->channels(), defaultChannels(8));
    EXPECT_TRUE(e.dunra->hardwarePresent());
    EXPECT_FALSE(e.melko->isConnected());
}

TEST_F(Demo, AUnitPluggedInDuringDemoEndsDemoForEveryEngine)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();

    midi.addDevice("Orvan");
    deliverPosted();

    EXPECT_FALSE(DemoMode::shared().active());
    EXPECT_TRUE(e.orvan->hardwarePresent());
    EXPECT_EQ(e.orvan->channels(), defaultChannels(8));
    EXPECT_FALSE(e.dunra->isConnected());
    EXPECT_EQ(e.dunra->channels(), defaultChannels(2));
    EXPECT_FALSE(e.melko->isConnected());
}

TEST_F(Demo, ASetupChangeThatBringsNoUnitLeavesDemoStateAlone)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();
    e.orvan->setGain(0, 20);

    midi.addDevice("Something else");
    deliverPosted();

    EXPECT_TRUE(e.orvan->isConnected());
    EXPECT_EQ(e.orvan->channels()[0].gainValue, 20);
}

TEST_F(Demo, SwitchedOffEveryEngineReturnsToDefaultsAndAPresentOneStaysConnected)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();
    const auto dunra = midi.addDevice("Dunra"); // found only when something looks again
    (void)dunra;

    DemoMode::shared().setActive(false);

    EXPECT_FALSE(e.orvan->isConnected());
    EXPECT_EQ(e.orvan->channels(), defaultChannels(8));
    EXPECT_FALSE(e.melko->isConnected());
    EXPECT_EQ(e.melko->channels(), defaultChannels(1));
}

TEST_F(Demo, AssigningTrueAgainReloadsTheSamples)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();
    e.dunra->setGain(0, 20);
    DemoMode::shared().setActive(true);
    EXPECT_EQ(e.dunra->channels(), demoSamples("Dunra"));
}

TEST_F(Demo, APresentUnitNeverShowsDemoState)
{
    midi.addDevice("Melko");
    auto e = startApp();
    DemoMode::shared().setActive(true);
    EXPECT_TRUE(e.melko->hardwarePresent());
    EXPECT_FALSE(e.melko->demoLoaded());
    EXPECT_EQ(e.melko->channels(), defaultChannels(1));
    EXPECT_TRUE(e.orvan->demoLoaded());
}

TEST_F(Demo, TheUnverifiedMelkoTakesLocalChangesOnlyInDemoState)
{
    DemoMode::shared().setActive(true);
    auto e = startApp();
    e.melko->set(OrvanSwitch::phantom, 0, false);
    EXPECT_FALSE(e.melko->channels()[0].phantom);
    e.melko->setGain(0, 20);
    EXPECT_EQ(e.melko->channels()[0].gainValue, 20);
    EXPECT_TRUE(midi.sent().empty());
}

TEST_F(Demo, AUnitWithOnlyItsDestinationHoldsDemoStateAndReceivesDemoRequests)
{
    midi.addDestination(QStringLiteral("Melko"));
    DemoMode::shared().setActive(true);
    auto e = startApp();
    ASSERT_TRUE(e.melko->demoLoaded());

    e.melko->set(OrvanSwitch::hpf, 0, false);

    ASSERT_EQ(midi.sent().size(), 1u);
    EXPECT_EQ(midi.sent()[0].controller(), 1);
    EXPECT_EQ(midi.sent()[0].value(), 0);
}

TEST_F(Demo, EveryAssignmentIsHeardEvenWhenTheValueDoesNotChange)
{
    int heard = 0;
    QObject context;
    DemoMode::shared().subscribe(&context, [&](bool) { ++heard; });
    EXPECT_EQ(heard, 1) << "the current value is delivered at once";
    DemoMode::shared().setActive(false);
    DemoMode::shared().setActive(false);
    EXPECT_EQ(heard, 3);
}
