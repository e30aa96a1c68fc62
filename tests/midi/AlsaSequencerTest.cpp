// The ALSA sequencer on the real kernel (run inside the VM): what only ALSA can do to the app.
// The scenarios every MIDI system shares are in the integration battery.
#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "UnitRig.h"
#include "midi/LinuxMidiSystem.h"
#include "midi/MidiVocabulary.h"
#include "midi/alsa/AlsaMidiSystem.h"
#include "time/ManualClock.h"

#include <QTimer>
#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

using namespace orvan;
using orvan::test::waitFor;

namespace {

constexpr int kReportEveryMilliseconds = 20;

/// A sequencer client standing in for a one-port USB unit named "Orvan".
struct RawUnit {
    snd_seq_t* seq = nullptr;
    int port = -1;

    RawUnit()
    {
        if (snd_seq_open(&seq, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0) {
            seq = nullptr;
            return;
        }
        snd_seq_set_client_name(seq, "Orvan");
        port = snd_seq_create_simple_port(seq, "MIDI 1",
                                          SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE
                                              | SND_SEQ_PORT_CAP_SUBS_WRITE,
                                          SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_HARDWARE);
    }
    ~RawUnit() { if (seq) snd_seq_close(seq); }
    /// Reports a Control Change on MIDI channel 1 to whoever listens.
    void report(int controller, int value)
    {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        snd_seq_ev_set_source(&event, port);
        snd_seq_ev_set_subs(&event);
        snd_seq_ev_set_direct(&event);
        snd_seq_ev_set_controller(&event, 0, controller, value);
        snd_seq_event_output_direct(seq, &event);
    }
    /// The Control Changes received so far, as type-2 words.
    std::vector<quint32> received()
    {
        std::vector<quint32> words;
        snd_seq_event_t* event = nullptr;
        while (snd_seq_event_input(seq, &event) >= 0 && event) {
            if (event->type == SND_SEQ_EVENT_CONTROLLER)
                words.push_back(Midi::controlChangeWord(int(event->data.control.param), event->data.control.value,
                                                        event->data.control.channel));
        }
        return words;
    }
};

TEST(AlsaSequencer, TheLibraryPrintsNothingWhenTheSequencerTurnsUsAway)
{
    // every client slot of the kernel sequencer taken
    DemoMode::shared().setActive(false);
    AlsaMidiSystem system;
    std::vector<std::unique_ptr<RawUnit>> taken;
    while (taken.empty() || taken.back()->seq)
        taken.push_back(std::make_unique<RawUnit>());
    ASSERT_GT(taken.size(), 1u);

    testing::internal::CaptureStderr(); // the file descriptor: the ALSA library's C code included
    ManualClock clock;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    engine.connect();
    engine.setGain(0, 10);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(system.isOpen());
    EXPECT_FALSE(engine.isConnected());
}

TEST(AlsaSequencer, AUnitReplacedBeforeTheEngineHearsOfItIsReachedAndHeard)
{
    DemoMode::shared().setActive(false);
    const auto system = createLinuxMidiSystem();
    ManualClock clock;
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    auto first = std::make_unique<RawUnit>();
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // replugged under the same name (likely the same address) before the engine hears of it
    first.reset();
    RawUnit second;
    ASSERT_NE(second.seq, nullptr);
    // its reports reach the panel once the engine caught up (it repeats them until then)...
    QTimer reporting;
    QObject::connect(&reporting, &QTimer::timeout, [&] { second.report(16 * 3 + 7, 127); });
    reporting.start(kReportEveryMilliseconds);
    EXPECT_TRUE(waitFor([&] { return engine.channels()[3].mute; }));
    reporting.stop();
    // ...and the engine's messages reach the new unit
    engine.setGain(0, 10);
    EXPECT_TRUE(waitFor([&] { return second.received() == std::vector<quint32>{Midi::controlChangeWord(9, 10)}; }));
    EXPECT_TRUE(engine.isConnected());
}

} // namespace
