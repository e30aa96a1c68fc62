#include "PacedSender.h"

#include "OrvanMIDI.h"
#include "time/Scheduler.h"

#include <QObject>
#include <QPointer>
#include <algorithm>

namespace orvan {

namespace {

using Step = PacedSender::Step;

Step toggle(OrvanSwitch s, int channel, bool on)
{
    return Step{Step::Kind::toggle, channel, s, on ? 1 : 0, kPacing.afterMessage};
}

/// Runs its task when the last sequence holding it lets go: that is when a quit may go on.
struct StopWaiter {
    std::function<void()> whenStopped;
    StopWaiter() = default;
    StopWaiter(const StopWaiter&) = delete; // a copy would run the task twice
    StopWaiter& operator=(const StopWaiter&) = delete;
    ~StopWaiter()
    {
        if (whenStopped)
            whenStopped();
    }
};

/// The running state of one sequence, shared by its scheduled continuations.
struct Run {
    OrvanMIDI& midi;
    Scheduler& scheduler;
    QPointer<QObject> context;
    std::vector<Step> steps;
    PhantomConsent consent;
    std::function<void()> onFinished;
    std::size_t next = 0;
    std::shared_ptr<StopWaiter> stop{}; ///< set while a quit waits for this sequence
};

/// Every sequence started, for stopAll (the main thread's only).
std::vector<std::weak_ptr<Run>>& runs()
{
    static std::vector<std::weak_ptr<Run>> all;
    return all;
}

bool isPhantomToggle(const Step& step) { return step.kind == Step::Kind::toggle && step.which == OrvanSwitch::phantom; }

/// Between two +48V messages of one block: the block is one unit of sending.
bool isInsidePhantomBlock(const Run& run)
{
    return run.next > 0 && run.next < run.steps.size() && isPhantomToggle(run.steps[run.next - 1])
        && isPhantomToggle(run.steps[run.next]);
}

void perform(OrvanMIDI& midi, PhantomConsent consent, const Step& step)
{
    switch (step.kind) {
    case Step::Kind::pause:
        return;
    case Step::Kind::gain:
        midi.setGain(step.channel, step.value);
        return;
    case Step::Kind::toggle: {
        const bool on = step.value != 0;
        if (step.which == OrvanSwitch::phantom && on && consent == PhantomConsent::keepOnOnly) {
            // Nobody confirmed this send: if +48V went off since the recall was checked, it stays
            // off rather than coming back on unasked.
            const auto& channels = midi.channels();
            if (step.channel >= channels.size() || !channels.at(step.channel).phantom)
                return;
        }
        midi.set(step.which, step.channel, on);
        return;
    }
    }
}

void finish(const std::shared_ptr<Run>& run)
{
    run->next = run->steps.size();
    run->stop.reset();
    if (run->context && run->onFinished)
        run->onFinished();
}

void runNext(const std::shared_ptr<Run>& run)
{
    if (!run->context)
        return;
    if (run->next >= run->steps.size() || (run->stop && !isInsidePhantomBlock(*run))) {
        finish(run);
        return;
    }
    const Step step = run->steps[run->next++];
    perform(run->midi, run->consent, step);
    // The pause after the last message holds back whatever the owner sends next, too.
    if (run->next < run->steps.size())
        run->scheduler.schedule(step.pauseAfter, run->context, [run] { runNext(run); });
    else
        run->scheduler.schedule(step.pauseAfter, run->context, [run] { finish(run); });
}

/// One step's effect on the engine's channels, as `OrvanMIDI::setGain` and `set` store it.
void applyStep(const DeviceSpec& spec, ChannelStates& channels, const Step& step)
{
    if (step.kind == Step::Kind::pause || step.channel < 0 || step.channel >= channels.size())
        return;
    ChannelState& c = channels[step.channel];
    if (step.kind == Step::Kind::gain) {
        const GainRange range = gainRange(spec, c.di);
        c.gainValue = std::clamp(step.value, range.lowest, range.highest);
        c.gainFine = 0;
        return;
    }
    c.setOn(step.which, step.value != 0);
    if (step.which == OrvanSwitch::di) {
        c.gainValue = step.value != 0 ? kDIGainLowest : kMicGainLowest;
        c.gainFine = 0;
    }
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

std::vector<Step> PacedSender::planChanges(const DeviceSpec& spec, const ChannelStates& current,
                                           const ChannelStates& target, const QList<int>& channels)
{
    QList<int> list;
    for (int c : channels) {
        if (c >= 0 && c < spec.channelCount && c < current.size() && c < target.size() && !list.contains(c))
            list.append(c);
    }
    std::ranges::sort(list);

    // Each step is compared with the channel as the steps before it leave it.
    ChannelStates now = current;
    std::vector<Step> steps;
    const auto take = [&](const Step& step) {
        steps.push_back(step);
        applyStep(spec, now, step);
    };
    const auto takeIfDiffers = [&](OrvanSwitch s, int c) {
        if (now[c].isOn(s) != target[c].isOn(s))
            take(toggle(s, c, target[c].isOn(s)));
    };

    if (spec.hasDI) {
        for (int c : list)
            takeIfDiffers(OrvanSwitch::di, c);
    }
    const std::size_t beforePhantom = steps.size();
    for (int c : list)
        takeIfDiffers(OrvanSwitch::phantom, c);
    if (steps.size() > beforePhantom)
        steps.push_back(Step{Step::Kind::pause, 0, OrvanSwitch::pad, 0, kPacing.afterPhantom});
    for (int c : list) {
        if (const auto gain = target[c].gainValue; gain && now[c].gainValue != gain)
            take(Step{Step::Kind::gain, c, OrvanSwitch::pad, *gain, kPacing.afterMessage});
        takeIfDiffers(OrvanSwitch::pad, c);
        takeIfDiffers(OrvanSwitch::polarity, c);
        if (spec.hasHPF)
            takeIfDiffers(OrvanSwitch::hpf, c);
    }
    for (int c : list)
        takeIfDiffers(OrvanSwitch::mute, c);
    return steps;
}

ChannelStates PacedSender::applied(const DeviceSpec& spec, ChannelStates channels, const std::vector<Step>& steps)
{
    for (const Step& step : steps)
        applyStep(spec, channels, step);
    return channels;
}

std::size_t PacedSender::messageCount(const std::vector<Step>& steps)
{
    return std::size_t(std::ranges::count_if(steps, [](const Step& s) { return s.kind != Step::Kind::pause; }));
}

void PacedSender::start(OrvanMIDI& midi, Scheduler& scheduler, QObject* context, std::vector<Step> steps,
                        PhantomConsent consent, std::function<void()> onFinished)
{
    auto run = std::make_shared<Run>(Run{midi, scheduler, context, std::move(steps), consent, std::move(onFinished)});
    std::erase_if(runs(), [](const std::weak_ptr<Run>& r) { return r.expired(); });
    runs().push_back(run);
    scheduler.schedule(std::chrono::milliseconds(0), context, [run] { runNext(run); });
}

void PacedSender::sendNow(OrvanMIDI& midi, const std::vector<Step>& steps, PhantomConsent consent)
{
    for (const Step& step : steps)
        perform(midi, consent, step);
}

void PacedSender::stopAll(std::function<void()> whenStopped)
{
    auto waiter = std::make_shared<StopWaiter>();
    waiter->whenStopped = std::move(whenStopped);
    for (const std::weak_ptr<Run>& weak : runs()) {
        if (const auto run = weak.lock(); run && run->context && run->next < run->steps.size())
            run->stop = waiter;
    }
    // With no sequence running, letting go of `waiter` here runs the task at once.
}

} // namespace orvan
