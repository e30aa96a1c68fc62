#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;
using namespace std::chrono_literals;

class GainInference : public EngineFixture {
protected:
    void reportGain(int value) { report(unit, 9, value); }
    qint64 fine() const { return engine->channels()[0].gainFine; }
    std::optional<qint64> gain() const { return engine->channels()[0].gainValue; }

    VirtualMidiSystem::Device unit = midi.addDevice("Orvan");
    std::unique_ptr<OrvanMIDI> engine = makeEngine(Catalogue::orvan());
};

TEST_F(GainInference, RepeatedCoarseReportsWalkTheFinePositionInTheLastDirection)
{
    struct Step { int report; qint64 fine; };
    const Step steps[] = {
        {9, 0},  {9, 1},                    // the first report lands at the bottom, still rising as at start
        {10, 0}, {10, 1}, {10, 2}, {10, 2}, // up into 10, then detents up, held at the top
        {9, 2},  {9, 1},  {9, 0},  {9, 0},  // down into 9 at its top, detents down
        {10, 0},                            // up again: bottom of the new step
        {127, 0}, {0, 2},                   // stored as reported, even outside the gain range
    };
    const auto dunra = midi.addDevice("Dunra"); // without fine tracking: always the bottom of the step
    const auto dunraEngine = makeEngine(Catalogue::dunra());
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        reportGain(steps[i].report);
        report(dunra, 9, steps[i].report);
        EXPECT_EQ(gain(), steps[i].report) << "step " << i;
        EXPECT_EQ(fine(), steps[i].fine) << "step " << i;
        EXPECT_EQ(dunraEngine->channels()[0].gainFine, 0) << "Dunra, step " << i;
    }
}

TEST_F(GainInference, AnEqualReportWithinHalfASecondOfTheSendIsItsEchoAndMovesNothing)
{
    struct Event { std::chrono::milliseconds after; int report; qint64 fine; const char* what; };
    const Event events[] = {
        {100ms, 10, 0, "the echo is not a detent"},
        {100ms, 9, 2, "a different value is a real report: down into 9, at its top"},
        {250ms, 10, 2, "the late echo moves neither the fine position nor the direction"},
        {50ms, 10, 1, "half a second after the send: a real detent, still falling"},
    };
    engine->setGain(0, 10);
    for (const Event& e : events) {
        clock.advance(e.after);
        reportGain(e.report);
        EXPECT_EQ(gain(), e.report) << e.what;
        EXPECT_EQ(fine(), e.fine) << e.what;
    }
    engine->setGain(0, 12);
    EXPECT_EQ(fine(), 0) << "a send starts at the bottom of its step";
}

TEST_F(GainInference, AnUnpluggedUnitShowsDefaultsAndStartsItsInferenceAfresh)
{
    for (int value : {10, 9}) // falling
        reportGain(value);
    report(unit, 23, 127); // channel 2 muted at the unit
    engine->setGain(0, 12);
    midi.removeDevice(unit);
    deliverPosted();
    EXPECT_FALSE(engine->isConnected());
    EXPECT_EQ(engine->channels(), ChannelStates(8));

    unit = midi.addDevice("Orvan");
    deliverPosted();
    clock.advance(100ms); // well inside the old send's echo window
    reportGain(12);
    reportGain(12);
    EXPECT_EQ(fine(), 1) << "neither the old send nor the old direction survives an unplug";
}
