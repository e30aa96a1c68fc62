#include "UndoHistory.h"

#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "time/Clock.h"

#include <QPointer>
#include <algorithm>

namespace orvan {

namespace {

/// What the panel shows of a channel: the fine position is the unit's own and is not restored.
bool sameSettings(ChannelState a, ChannelState b)
{
    a.gainFine = b.gainFine = 0;
    return a == b;
}

bool sameSettings(const ChannelStates& a, const ChannelStates& b)
{
    return std::ranges::equal(a, b, [](const ChannelState& x, const ChannelState& y) { return sameSettings(x, y); });
}

/// `base` with every setting that differs between `from` and `to` set as in `to`.
ChannelStates withChanges(ChannelStates base, const ChannelStates& from, const ChannelStates& to)
{
    for (qsizetype c = 0; c < std::min({base.size(), from.size(), to.size()}); ++c) {
        for (OrvanSwitch s : allSwitches) {
            if (from[c].isOn(s) != to[c].isOn(s))
                base[c].setOn(s, to[c].isOn(s));
        }
        if (from[c].gainValue != to[c].gainValue || from[c].gainFine != to[c].gainFine) {
            base[c].gainValue = to[c].gainValue;
            base[c].gainFine = to[c].gainFine;
        }
    }
    return base;
}

} // namespace

UndoHistory::UndoHistory(const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
{
}

void UndoHistory::follow(RCUModel& model)
{
    connect(&model, &RCUModel::changedByUser, this,
            [this, m = &model](const ChannelStates& before, const ChannelStates& after, const QString& run) {
                record(m, before, after, run);
            });
    // Demo state that ends and hardware that comes or goes leave the panel showing something else.
    connect(&model.midi(), &OrvanMIDI::isConnectedChanged, this, [this, m = &model](bool connected) {
        if (!connected)
            forget(m);
    });
    connect(&model.midi(), &OrvanMIDI::hardwarePresentChanged, this, [this, m = &model] { forget(m); });
}

void UndoHistory::record(RCUModel* model, const ChannelStates& before, const ChannelStates& after, const QString& run)
{
    const auto now = m_clock.now();
    m_steps.erase(m_steps.begin() + std::ptrdiff_t(m_done), m_steps.end()); // a new action ends what could be redone
    if (m_runOpen && !m_steps.empty() && !run.isEmpty()) {
        Step& last = m_steps.back();
        if (last.model == model && last.run == run && now - last.lastChange < kRunPause) {
            // Only this step's own change: what the unit reported since is not part of the run.
            last.after = withChanges(last.after, before, after);
            last.lastChange = now;
            if (sameSettings(last.before, last.after)) { // the run came back where it started
                m_steps.pop_back();
                m_done = m_steps.size();
                m_runOpen = false;
            }
            return;
        }
    }
    m_steps.push_back(Step{model, before, after, run, now, m_nextId++});
    if (m_steps.size() > kDepth)
        m_steps.erase(m_steps.begin()); // the oldest falls away
    m_done = m_steps.size();
    m_runOpen = true;
}

void UndoHistory::forget(const RCUModel* model)
{
    std::size_t doneLeft = 0;
    for (std::size_t i = 0; i < m_done; ++i)
        doneLeft += m_steps[i].model != model;
    std::erase_if(m_steps, [model](const Step& step) { return step.model == model; });
    m_done = doneLeft;
    m_runOpen = false;
}

void UndoHistory::undo()
{
    if (m_done > 0)
        restore(m_steps[m_done - 1], true);
}

void UndoHistory::redo()
{
    if (m_done < m_steps.size())
        restore(m_steps[m_done], false);
}

void UndoHistory::restore(const Step& step, bool undoing)
{
    m_runOpen = false; // a gain step after an undo or redo is a new action
    // The move waits for the model: a +48V question may come first, and Cancel leaves it here.
    // Meanwhile the history may have changed, so the step is looked up again by its id.
    const QPointer<UndoHistory> self(this);
    const quint64 id = step.id;
    const auto moveOn = [self, id, undoing] {
        if (!self)
            return;
        std::size_t& done = self->m_done;
        if (undoing && done > 0 && self->m_steps[done - 1].id == id)
            --done;
        else if (!undoing && done < self->m_steps.size() && self->m_steps[done].id == id)
            ++done;
    };
    if (undoing)
        step.model->restore(step.after, step.before, moveOn);
    else
        step.model->restore(step.before, step.after, moveOn);
}

} // namespace orvan
