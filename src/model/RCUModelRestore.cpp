// RCUModel's part in undo and redo: bringing the settings a user action changed back to one side
// of it. The rest of the model is in RCUModel.cpp.
#include "RCUModel.h"

#include "OrvanMIDI.h"
#include "PacedSender.h"

#include <algorithm>

namespace orvan {

bool RCUModel::canDrive() const
{
    return isConnected() && (m_midi.spec().verified || m_midi.demoLoaded());
}

void RCUModel::reportChange(const ChannelStates& before, const ChannelStates& after, const QString& run)
{
    if (after != before)
        emit changedByUser(before, after, run);
}

ChannelStates RCUModel::restoreGoal(const ChannelStates& from, const ChannelStates& to) const
{
    // Only what the action changed: a knob the unit's own front turned since is the unit's business.
    ChannelStates goal = m_midi.channels();
    const qsizetype n = std::min({goal.size(), from.size(), to.size()});
    for (qsizetype c = 0; c < n; ++c) {
        for (OrvanSwitch s : allSwitches) {
            if (from[c].isOn(s) != to[c].isOn(s))
                goal[c].setOn(s, to[c].isOn(s));
        }
        // A gain never reported counted as the bottom of its range for the step that moved it,
        // so that is where undoing the step takes it.
        if (from[c].gainValue != to[c].gainValue)
            goal[c].gainValue = to[c].gainValue.value_or(gainRange(m_midi.spec(), goal[c].di).lowest);
    }
    return goal;
}

void RCUModel::restore(const ChannelStates& from, const ChannelStates& to, std::function<void()> onApplied)
{
    // One paced send at a time: a restore never goes out faster than a recall does.
    if (!canDrive() || m_runningSends > 0)
        return;
    const ChannelStates& now = m_midi.channels();
    const ChannelStates goal = restoreGoal(from, to);
    QList<int> turningOn;
    for (qsizetype c = 0; c < now.size(); ++c) {
        if (goal[c].phantom && !now[c].phantom)
            turningOn.append(int(c));
    }
    if (!turningOn.isEmpty()) {
        // The same question as a click that switches +48V on; nothing moves until it is answered.
        setPendingPhantom(turningOn);
        m_pendingRestore = PendingRestore{from, to, turningOn, std::move(onApplied)};
        return;
    }
    sendRestore(goal, {});
    onApplied();
}

void RCUModel::confirmRestore()
{
    PendingRestore pending = std::move(*m_pendingRestore);
    setPendingPhantom(std::nullopt);
    if (!canDrive())
        return;
    sendRestore(restoreGoal(pending.from, pending.to), pending.asked);
    pending.onApplied();
}

void RCUModel::sendRestore(const ChannelStates& goal, const QList<int>& phantomConfirmed)
{
    // Worked out against the panel as it is now; +48V goes on only where the user said yes, even
    // if the unit switched another channel off while the question was open.
    const ChannelStates& now = m_midi.channels();
    ChannelStates allowed = goal;
    for (qsizetype c = 0; c < now.size(); ++c) {
        if (allowed[c].phantom && !now[c].phantom && !phantomConfirmed.contains(int(c)))
            allowed[c].phantom = false;
    }
    std::vector<PacedSender::Step> steps = PacedSender::planChanges(m_midi.spec(), now, allowed, allChannels());
    const PhantomConsent consent = phantomConfirmed.isEmpty() ? PhantomConsent::keepOnOnly : PhantomConsent::confirmed;
    if (PacedSender::messageCount(steps) <= 1) {
        PacedSender::sendNow(m_midi, steps, consent); // one message goes out like a click
        return;
    }
    ++m_runningSends;
    PacedSender::start(m_midi, m_scheduler, this, std::move(steps), consent, [this] { --m_runningSends; });
}

} // namespace orvan
