// The engine over the real ALSA sequencer, against a sequencer client standing in for a unit.
#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "midi/alsa/AlsaMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

using namespace orvan;

namespace {

constexpr int kWaitMilliseconds = 5000;

bool waitUntil(const std::function<bool()>& condition)
{
    QDeadlineTimer deadline(kWaitMilliseconds);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

class AlsaSequencerTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!QFileInfo::exists(QStringLiteral("/dev/snd/seq")))
            GTEST_SKIP() << "no ALSA sequencer here (/dev/snd/seq is missing; load snd-seq to run this test)";
        DemoMode::shared().setActive(false);
    }

    /// A sequencer client named like a one-port USB unit.
    snd_seq_t* plugUnit(const char* name, int& port)
    {
        snd_seq_t* seq = nullptr;
        if (snd_seq_open(&seq, "default", SND_SEQ_OPEN_DUPLEX, 0) < 0)
            return nullptr;
        snd_seq_set_client_name(seq, name);
        port = snd_seq_create_simple_port(seq, "MIDI 1",
                                          SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE
                                              | SND_SEQ_PORT_CAP_SUBS_WRITE,
                                          SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_HARDWARE);
        return seq;
    }

    ManualClock clock;
};

TEST_F(AlsaSequencerTest, AUnitPluggedInIsFoundHeardAndUnpluggedAgain)
{
    // given the engine with no unit
    AlsaMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    ASSERT_TRUE(system.isOpen());
    ASSERT_FALSE(engine.isConnected());

    // when a one-port "Orvan" appears
    int port = 0;
    snd_seq_t* unit = plugUnit("Orvan", port);
    ASSERT_NE(unit, nullptr);

    // then the announce brings it in without any call from us
    EXPECT_TRUE(waitUntil([&] { return engine.isConnected(); }));

    // when it reports mute on for channel 8 on MIDI channel 5
    snd_seq_event_t ev;
    snd_seq_ev_clear(&ev);
    snd_seq_ev_set_source(&ev, port);
    snd_seq_ev_set_subs(&ev);
    snd_seq_ev_set_direct(&ev);
    snd_seq_ev_set_controller(&ev, 4, 119, 64);
    snd_seq_event_output_direct(unit, &ev);

    // then
    EXPECT_TRUE(waitUntil([&] { return engine.channels()[7].mute; }));

    // when it goes away
    snd_seq_close(unit);

    // then
    EXPECT_TRUE(waitUntil([&] { return !engine.isConnected(); }));
}

} // namespace
