#include "PacedSender.h"

#include "OrvanMIDI.h"
#include "time/Scheduler.h"

#include <QObject>
#include <QPointer>

namespace orvan {

namespace {

using Step = PacedSender::Step;

Step toggle(OrvanSwitch s, int channel, bool on)
{
    return Step{Step::Kind::toggle, channel, s, on ? 1 : 0, kPacing.afterMessage};
}

/// The running state of one sequence, shared by its scheduled continuations.
struct Run {
    OrvanMIDI& midi;
    Scheduler& scheduler;
    QPointer<QObject> context;
    std::vector<Step> steps;
    PhantomConsent consent;
    std::size_t next = 0;
};

void perform(const Run& run, const Step& step)
{
    switch (step.kind) {
    case Step::Kind::pause:
        return;
    case Step::Kind::gain:
        run.midi.setGain(step.channel, step.value);
        return;
    case Step::Kind::toggle: {
        const bool on = step.value != 0;
        if (step.which == OrvanSwitch::phantom && on && run.consent == PhantomConsent::keepOnOnly) {
            // Nobody confirmed this send: if +48V went off since the recall was checked, it stays
            // off rather than coming back on unasked.
            const auto& channels = run.midi.channels();
            if (step.channel >= channels.size() || !channels.at(step.channel).phantom)
                return;
        }
        run.midi.set(step.which, step.channel, on);
        return;
    }
    }
}

void runNext(const std::shared_ptr<Run>& run)
{
    if (run->next >= run->steps.size() || !run->context)
        return;
    const Step step = run->steps[run->next++];
    perform(*run, step);
    if (run->next < run->steps.size())
        run->scheduler.schedule(step.pauseAfter, run->context, [run] { runNext(run); });
}

} // namespace

std::vector<Step> PacedSender::plan(const DeviceSpec& spec, const QList<ChannelSnapshot>& snapshots)
{
    // A hand-edited preset may hold more entries than the unit has channels: the extra entries are
    // skipped (they never reach the engine), and a shorter list sends only the channels it holds.
    const int n = int(std::min<qint64>(snapshots.size(), spec.channelCount));

    std::vector<Step> steps;
    if (spec.hasDI) {
        for (int i = 0; i < n; ++i)
            steps.push_back(toggle(OrvanSwitch::di, i, snapshots[i].di.value_or(false)));
    }
    for (int i = 0; i < n; ++i)
        steps.push_back(toggle(OrvanSwitch::phantom, i, snapshots[i].phantom));
    steps.push_back(Step{Step::Kind::pause, 0, OrvanSwitch::pad, 0, kPacing.afterPhantom});
    for (int i = 0; i < n; ++i) {
        const ChannelSnapshot& s = snapshots[i];
        if (s.gainValue)
            steps.push_back(Step{Step::Kind::gain, i, OrvanSwitch::pad, *s.gainValue, kPacing.afterMessage});
        steps.push_back(toggle(OrvanSwitch::pad, i, s.pad));
        steps.push_back(toggle(OrvanSwitch::polarity, i, s.polarity));
    }
    for (int i = 0; i < n; ++i)
        steps.push_back(toggle(OrvanSwitch::mute, i, snapshots[i].mute));
    return steps;
}

void PacedSender::start(OrvanMIDI& midi, Scheduler& scheduler, QObject* context, const QList<ChannelSnapshot>& snapshots,
                        PhantomConsent consent)
{
    auto run = std::make_shared<Run>(Run{midi, scheduler, context, plan(midi.spec(), snapshots), consent});
    scheduler.schedule(std::chrono::milliseconds(0), context, [run] { runNext(run); });
}

} // namespace orvan
