#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;
using namespace std::chrono_literals;

class GainInference : public EngineFixture {
protected:
    GainInference()
    {
        unit = midi.addDevice("Orvan");
        engine = makeEngine(Catalogue::orvan());
    }
    void reportGain(int channel, int value) { report(unit, 16 * channel + 9, value); }
    qint64 fine(int channel = 0) const { return engine->channels()[channel].gainFine; }
    std::optional<qint64> gain(int channel = 0) const { return engine->channels()[channel].gainValue; }

    VirtualMidiSystem::Device unit;
    std::unique_ptr<OrvanMIDI> engine;
};

TEST_F(GainInference, AnEqualReportWithinHalfASecondOfTheSendIsItsEcho)
{
    engine->setGain(0, 10); // the direction is still rising, as after start

    clock.advance(300ms);
    reportGain(0, 10);
    EXPECT_EQ(gain(), 10);
    EXPECT_EQ(fine(), 0) << "an echo is not a detent";

    clock.advance(300ms); // 0.6 s after the send: a real report of the same step
    reportGain(0, 10);
    EXPECT_EQ(fine(), 1);
}

TEST_F(GainInference, EveryEqualReportInsideTheWindowCountsAsEcho)
{
    engine->setGain(0, 12);
    for (int i = 0; i < 4; ++i) {
        clock.advance(100ms);
        reportGain(0, 12);
        EXPECT_EQ(fine(), 0) << "report " << i;
    }
    clock.advance(100ms); // exactly 0.5 s: no longer inside the window
    reportGain(0, 12);
    EXPECT_EQ(fine(), 1);
}

TEST_F(GainInference, AnEchoKeepsTheFinePositionAndDirection)
{
    engine->setGain(0, 10);
    clock.advance(100ms);
    reportGain(0, 9); // the unit's knob moved down meanwhile: top of step 9, falling
    ASSERT_EQ(fine(), 2);

    clock.advance(100ms);
    reportGain(0, 10); // the late echo of the send
    EXPECT_EQ(gain(), 10);
    EXPECT_EQ(fine(), 2) << "an echo moves neither the fine position nor the direction";

    clock.advance(500ms);
    reportGain(0, 10); // a real detent, still falling
    EXPECT_EQ(fine(), 1);
}

TEST_F(GainInference, AUnitThatWasUnpluggedStartsItsInferenceAfresh)
{
    reportGain(0, 10);
    reportGain(0, 9); // falling
    engine->setGain(0, 12);
    midi.removeDevice(unit);
    deliverPosted();
    ASSERT_FALSE(engine->isConnected());
    unit = midi.addDevice("Orvan");
    deliverPosted();

    clock.advance(100ms); // well inside the old send's echo window
    reportGain(0, 12);
    reportGain(0, 12);
    EXPECT_EQ(fine(), 1) << "neither the old send nor the old direction survives an unplug";
}

TEST_F(GainInference, ADifferentValueInsideTheWindowIsARealReport)
{
    engine->setGain(0, 12);
    clock.advance(100ms);
    reportGain(0, 11);
    EXPECT_EQ(gain(), 11);
    EXPECT_EQ(fine(), 2) << "came down into step 11: top of the step";
}

TEST_F(GainInference, RepeatedCoarseReportsWalkTheFinePositionInTheLastDirection)
{
    struct Step {
        int report;
        qint64 gain;
        qint64 fine;
    };
    reportGain(0, 9);
    const Step steps[] = {
        {10, 10, 0}, {10, 10, 1}, {10, 10, 2}, {10, 10, 2}, // up into 10, then detents up, held at the top
        {9, 9, 2},   {9, 9, 1},   {9, 9, 0},   {9, 9, 0},   // down into 9 at its top, detents down
        {10, 10, 0},                                         // up again: bottom of the new step
    };
    for (const Step& s : steps) {
        reportGain(0, s.report);
        EXPECT_EQ(gain(), s.gain);
        EXPECT_EQ(fine(), s.fine) << "after report " << s.report;
    }
}

TEST_F(GainInference, TheFirstReportAfterStartLandsAtTheBottomOfItsStepAndKeepsRising)
{
    reportGain(2, 15);
    EXPECT_EQ(gain(2), 15);
    EXPECT_EQ(fine(2), 0);
    reportGain(2, 15);
    EXPECT_EQ(fine(2), 1) << "direction stayed rising";
}

TEST_F(GainInference, ASendResetsTheFinePosition)
{
    reportGain(0, 9);
    reportGain(0, 10);
    reportGain(0, 10);
    ASSERT_EQ(fine(), 1);
    engine->setGain(0, 11);
    EXPECT_EQ(fine(), 0);
}

TEST_F(GainInference, UnitsWithoutFineTrackingAlwaysShowTheBottomOfTheStep)
{
    const auto dunra = midi.addDevice("Dunra");
    auto dunraEngine = makeEngine(Catalogue::dunra());
    for (int value : {9, 9, 9, 8, 8}) {
        report(dunra, 9, value);
        EXPECT_EQ(dunraEngine->channels()[0].gainValue, value);
        EXPECT_EQ(dunraEngine->channels()[0].gainFine, 0);
    }
}

TEST_F(GainInference, ReportsAreStoredAsReportedEvenOutsideTheGainRange)
{
    reportGain(0, 127);
    EXPECT_EQ(gain(), 127);
    reportGain(0, 0);
    EXPECT_EQ(gain(), 0);
}
