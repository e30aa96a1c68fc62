// A unit sends 10,000 Control Changes per second for a few seconds over JACK; the Orvan engine
// must apply every one, in order, while the main loop stays responsive.
//
//   midi_flood_bench [rate per second] [seconds] [frames per JACK cycle]
#include "Catalogue.h"
#include "DemoMode.h"
#include "JackTestServer.h"
#include "OrvanMIDI.h"
#include "UnitRig.h"
#include "midi/MidiVocabulary.h"
#include "midi/jack/JackMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <jack/jack.h>
#include <jack/metadata.h>
#include <jack/midiport.h>

#include <atomic>
#include <cstdio>

using namespace orvan;

namespace {

constexpr int kDefaultRate = 10000;
constexpr int kDefaultSeconds = 3;
// 21 ms cycles: without real-time priority, shorter ones overrun on a busy machine and JACK
// itself then loses whole cycles of MIDI, which says nothing about our path.
constexpr int kDefaultPeriodFrames = 1024;
constexpr int kChannels = 8;
constexpr int kMuteOffset = 7;
constexpr quint8 kOn = 127;
constexpr int kTickMilliseconds = 1;
constexpr int kDrainTimeoutMilliseconds = 10000;

/// Report i mutes or unmutes channel i mod 8, alternating per round: every report changes the
/// engine's state, so a lost or reordered one shows.
struct Report {
    int channel;
    bool on;
};
Report reportAt(quint64 i)
{
    return {int(i % kChannels), (i / kChannels) % 2 == 0};
}

/// The flooding unit: a JACK client whose process callback writes as many reports per cycle as
/// the rate asks for, from the first cycle in which the engine listens.
struct FloodUnit {
    jack_client_t* client = nullptr;
    std::atomic<jack_port_t*> out{nullptr};
    jack_port_t* in = nullptr;
    quint64 total = 0;
    double perFrame = 0;
    jack_nframes_t startFrame = 0;
    bool started = false;
    std::atomic<quint64> written{0};

    static int process(jack_nframes_t frames, void* arg)
    {
        auto* u = static_cast<FloodUnit*>(arg);
        jack_port_t* port = u->out.load(std::memory_order_acquire);
        if (!port)
            return 0;
        void* buffer = jack_port_get_buffer(port, frames);
        jack_midi_clear_buffer(buffer);
        if (!u->started) {
            if (jack_port_connected(port) == 0)
                return 0;
            u->started = true;
            u->startFrame = jack_last_frame_time(u->client);
        }
        const jack_nframes_t elapsed = jack_last_frame_time(u->client) - u->startFrame + frames;
        const quint64 due = std::min<quint64>(u->total, quint64(elapsed * u->perFrame));
        quint64 n = u->written.load(std::memory_order_relaxed);
        for (; n < due; ++n) {
            const Report r = reportAt(n);
            const quint8 bytes[3] = {Midi::kControlChange, quint8(r.channel * 16 + kMuteOffset), r.on ? kOn : quint8(0)};
            if (jack_midi_event_write(buffer, 0, bytes, sizeof bytes) != 0) // port buffer full: next cycle
                break;
        }
        u->written.store(n, std::memory_order_release);
        return 0;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int rate = argc > 1 ? std::atoi(argv[1]) : kDefaultRate;
    const int seconds = argc > 2 ? std::atoi(argv[2]) : kDefaultSeconds;

    const int period = argc > 3 ? std::atoi(argv[3]) : kDefaultPeriodFrames;
    test::JackTestServer server(QStringLiteral("flood"), period);
    if (!server.start()) {
        std::fprintf(stderr, "jackd (dummy driver) did not start\n");
        return 1;
    }
    DemoMode::shared().setActive(false);
    ManualClock clock;
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);

    // Every change must be the next report: the next channel round-robin, to the value of the
    // report's round. A lost report shows as a missing change (its channel's next report then
    // changes nothing), a reordered one as a change out of turn.
    quint64 applied = 0;
    quint64 outOfTurn = 0;
    int lastChannel = kChannels - 1;
    ChannelStates previous = engine.channels();
    QObject::connect(&engine, &OrvanMIDI::channelsChanged, [&] {
        const ChannelStates& now = engine.channels();
        int changedChannels = 0;
        int changed = -1;
        for (int ch = 0; ch < kChannels; ++ch) {
            if (now[ch].mute != previous[ch].mute) {
                ++changedChannels;
                changed = ch;
            }
        }
        if (changedChannels != 1 || changed != (lastChannel + 1) % kChannels)
            ++outOfTurn;
        lastChannel = changed;
        previous = now;
        ++applied;
    });

    FloodUnit unit;
    unit.total = quint64(rate) * quint64(seconds);
    jack_status_t status{};
    unit.client = jack_client_open("Orvan", JackNoStartServer, &status);
    if (!unit.client)
        return 1;
    unit.perFrame = double(rate) / jack_get_sample_rate(unit.client);
    jack_set_process_callback(unit.client, &FloodUnit::process, &unit);
    jack_activate(unit.client);
    unit.in = jack_port_register(unit.client, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_port_t* out = jack_port_register(unit.client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    for (jack_port_t* p : {out, unit.in})
        jack_set_property(unit.client, jack_port_uuid(p), JACK_METADATA_PRETTY_NAME, "Orvan", "text/plain");
    if (!test::waitFor([&] { return engine.isConnected(); })) {
        std::fprintf(stderr, "the engine did not find the flooding unit\n");
        return 1;
    }

    // A 1 ms timer measures how late the main loop gets round to it while the flood is applied.
    qint64 worstLatenessUs = 0;
    QElapsedTimer sinceTick;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(kTickMilliseconds);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        worstLatenessUs = std::max(worstLatenessUs, sinceTick.nsecsElapsed() / 1000 - kTickMilliseconds * 1000);
        sinceTick.restart();
    });

    QElapsedTimer wall;
    wall.start();
    sinceTick.start();
    tick.start();
    unit.out.store(out, std::memory_order_release);
    test::waitFor([&] { return unit.written.load() >= unit.total; },
                  std::chrono::milliseconds(seconds * 1000 + kDrainTimeoutMilliseconds));
    const bool done = test::waitFor([&] { return applied >= unit.total; },
                                      std::chrono::milliseconds(kDrainTimeoutMilliseconds / 10));
    const qint64 elapsedMs = wall.elapsed();
    tick.stop();

    std::printf("flood: %llu reports at %d/s over %d s, JACK cycle %d frames at 48 kHz\n",
                static_cast<unsigned long long>(unit.total), rate, seconds, period);
    std::printf("  written by the unit:      %llu\n", static_cast<unsigned long long>(unit.written.load()));
    std::printf("  applied by the engine:    %llu%s\n", static_cast<unsigned long long>(applied), done ? "" : " (some lost)");
    std::printf("  changes out of turn:      %llu\n", static_cast<unsigned long long>(outOfTurn));
    std::printf("  dropped in ring buffer:   %llu\n", static_cast<unsigned long long>(system.droppedReports()));
    std::printf("  wall time:                %lld ms\n", static_cast<long long>(elapsedMs));
    std::printf("  worst main-loop lateness: %.2f ms (1 ms timer)\n", double(worstLatenessUs) / 1000.0);

    jack_client_close(unit.client);
    return done && outOfTurn == 0 ? 0 : 1;
}
