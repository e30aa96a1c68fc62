// The ALSA sequencer system on the real kernel (run inside the VM): what only ALSA can do to it.
// The scenarios every MIDI system shares are in the integration battery.
#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "midi/MidiBytes.h"
#include "midi/alsa/AlsaMidiSystem.h"
#include "UnitRig.h"
#include "time/ManualClock.h"

#include <QFile>
#include <QTemporaryFile>
#include <QTimer>
#include <alsa/asoundlib.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace orvan;
using orvan::test::waitFor;

namespace {

constexpr char kSequencer[] = "default";
constexpr int kReportEveryMilliseconds = 20;
constexpr unsigned kDuplex =
    SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;

/// Whatever this process writes to standard error meanwhile, the ALSA library's C code included.
class StandardErrorCapture {
public:
    StandardErrorCapture()
    {
        m_file.open();
        std::fflush(stderr);
        m_saved = ::dup(STDERR_FILENO);
        ::dup2(m_file.handle(), STDERR_FILENO);
    }
    ~StandardErrorCapture() { restore(); }

    QByteArray take()
    {
        restore();
        QFile written(m_file.fileName());
        written.open(QIODevice::ReadOnly);
        return written.readAll();
    }

private:
    void restore()
    {
        if (m_saved < 0)
            return;
        std::fflush(stderr);
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
        m_saved = -1;
    }

    QTemporaryFile m_file;
    int m_saved = -1;
};

/// A sequencer client standing in for a one-port USB unit.
struct RawUnit {
    snd_seq_t* seq = nullptr;
    int port = -1;

    explicit RawUnit(const char* name)
    {
        if (snd_seq_open(&seq, kSequencer, SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0) {
            seq = nullptr;
            return;
        }
        snd_seq_set_client_name(seq, name);
        port = snd_seq_create_simple_port(seq, "MIDI 1", kDuplex, SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_HARDWARE);
    }
    ~RawUnit() { unplug(); }
    void unplug()
    {
        if (seq)
            snd_seq_close(seq);
        seq = nullptr;
    }
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
        while (seq && snd_seq_event_input(seq, &event) >= 0 && event) {
            if (event->type == SND_SEQ_EVENT_CONTROLLER)
                words.push_back(MidiBytes::controlChangeWord(event->data.control.channel, int(event->data.control.param),
                                                             event->data.control.value));
        }
        return words;
    }
};

MidiEndpointRef find(const MidiSystem& system, bool source, const QString& name)
{
    const int count = source ? system.sourceCount() : system.destinationCount();
    for (int i = 0; i < count; ++i) {
        const MidiEndpointRef e = source ? system.source(i) : system.destination(i);
        if (system.displayName(e) == name)
            return e;
    }
    return 0;
}

TEST(AlsaSequencer, TheLibraryPrintsNothingWhenTheSequencerTurnsUsAway)
{
    // given every client slot of the kernel sequencer taken
    DemoMode::shared().setActive(false);
    AlsaMidiSystem system;
    std::vector<std::unique_ptr<RawUnit>> taken;
    while (taken.empty() || taken.back()->seq)
        taken.push_back(std::make_unique<RawUnit>("Orvan"));
    ASSERT_GT(taken.size(), 1u);

    // when an engine starts, looks for its unit and sends
    StandardErrorCapture capture;
    ManualClock clock;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    engine.connect();
    engine.setGain(0, 10);

    // then it found nothing, and nobody was told on standard error
    const QByteArray printed = capture.take();
    EXPECT_FALSE(system.isOpen());
    EXPECT_FALSE(engine.isConnected());
    EXPECT_EQ(printed.toStdString(), "");
}

TEST(AlsaSequencer, AUnitVanishingBetweenAnyTwoCallsBreaksNothingAndTheNextOneWorks)
{
    // given our client with its ports, and the calls an engine makes while it looks and sends
    AlsaMidiSystem system;
    const MidiClientRef client = system.createClient(QStringLiteral("OrvanRCU-Test"), [](int) {});
    const MidiPortRef in = system.createInputPort(client, QStringLiteral("In"), [](std::span<const quint32>) {});
    const MidiPortRef out = system.createOutputPort(client, QStringLiteral("Out"));
    ASSERT_TRUE(system.isOpen());
    const quint32 word = MidiBytes::controlChangeWord(0, 9, 10);
    MidiEndpointRef source = 0, destination = 0;
    const std::vector<std::function<void()>> calls{
        [&] { source = find(system, true, QStringLiteral("Orvan")); },
        [&] { destination = find(system, false, QStringLiteral("Orvan")); },
        [&] { system.connectSource(in, source); },
        [&] { system.send(out, destination, word); },
        [&] { system.disconnectSource(in, source); },
        [&] { system.send(out, destination, word); },
    };

    for (std::size_t vanishAt = 0; vanishAt <= calls.size(); ++vanishAt) {
        SCOPED_TRACE(vanishAt);
        // when the unit vanishes before call `vanishAt`
        RawUnit unit("Orvan");
        ASSERT_NE(unit.seq, nullptr);
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (i == vanishAt)
                unit.unplug();
            calls[i]();
        }
        // then, when it stays, it received both messages
        if (vanishAt == calls.size()) {
            EXPECT_EQ(unit.received(), (std::vector<quint32>{word, word}));
        }
    }
}

TEST(AlsaSequencer, AUnitReplacedBeforeTheEngineHearsOfItIsReachedAndHeard)
{
    // given the engine connected to a unit
    DemoMode::shared().setActive(false);
    AlsaMidiSystem system;
    ManualClock clock;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    auto first = std::make_unique<RawUnit>("Orvan");
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // when it is replugged under the same name (most likely at the same sequencer address) with
    // no chance for the engine to hear of it in between
    first.reset();
    RawUnit second("Orvan");
    ASSERT_NE(second.seq, nullptr);

    // then, once the engine has caught up, the new unit's reports reach the panel (it repeats
    // its report until then)...
    QTimer reporting;
    QObject::connect(&reporting, &QTimer::timeout, [&] { second.report(16 * 3 + 7, 127); });
    reporting.start(kReportEveryMilliseconds);
    EXPECT_TRUE(waitFor([&] { return engine.channels()[3].mute; }));
    reporting.stop();
    // ...and the engine's messages reach the new unit
    engine.setGain(0, 10);
    EXPECT_TRUE(waitFor([&] { return second.received() == std::vector<quint32>{MidiBytes::controlChangeWord(0, 9, 10)}; }));
    EXPECT_TRUE(engine.isConnected());
}

} // namespace
