// Costs of the model's heavier paths: encoding and decoding a large preset file, and planning and
// running a whole-unit recall against the virtual MIDI system on a manual clock.
#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "PacedSender.h"
#include "PresetJson.h"
#include "PresetStorage.h"
#include "RCUModel.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

namespace {

using namespace orvan;

Presets manyPresets(int count)
{
    Presets presets;
    for (int i = 0; i < count; ++i) {
        presets.append(Preset{QUuid::createUuid(), QStringLiteral("Preset %1").arg(i + 1),
                              QList<ChannelSnapshot>(8, ChannelSnapshot{12, false, true, false, true, std::nullopt})});
    }
    return presets;
}

void encodePresets(benchmark::State& state)
{
    const Presets presets = manyPresets(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(PresetJson::encode(presets));
}
BENCHMARK(encodePresets)->Arg(10)->Arg(1000);

void decodePresets(benchmark::State& state)
{
    const QByteArray bytes = PresetJson::encode(manyPresets(int(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(PresetJson::decode(bytes));
}
BENCHMARK(decodePresets)->Arg(10)->Arg(1000);

void recallEightChannels(benchmark::State& state)
{
    ManualClock clock;
    VirtualMidiSystem system(&clock);
    system.addDevice(QStringLiteral("Orvan"));
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    RCUModel model(engine, clock);
    const Preset preset = manyPresets(1).front();
    for (auto _ : state) {
        model.recall(preset);
        clock.runUntilIdle();
        system.clearSent();
    }
}
BENCHMARK(recallEightChannels);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    DemoMode::shared().setActive(false);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
