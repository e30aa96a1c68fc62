#include "SessionRecall.h"

#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "time/Scheduler.h"

namespace orvan {

namespace {

/// The name the recall confirmation shows: "Recall preset from the session?"
const QString kSessionPresetName = QStringLiteral("from the session");

} // namespace

SessionRecall::SessionRecall(QList<RCUModel*> models, Scheduler& scheduler)
    : m_models(std::move(models))
    , m_scheduler(scheduler)
{
    for (RCUModel* model : m_models) {
        // The engine publishes the unit's presence before its connection: the model can act on
        // it only once both are in, on the next turn.
        connect(&model->midi(), &OrvanMIDI::hardwarePresentChanged, this, [this, model] {
            m_scheduler.schedule(std::chrono::milliseconds(0), this,
                                 [this, model] { onPresence(model, model->midi().hardwarePresent()); });
        });
        // Every change of what a panel shows passes here: a click, a recall, an undo, a report.
        connect(&model->midi(), &OrvanMIDI::channelsChanged, this, [this] {
            if (m_state)
                setDirty(true);
        });
    }
}

void SessionRecall::open(SessionState state)
{
    m_state = std::move(state);
    if (!m_arrivals.isEmpty()) {
        m_arrivals.clear();
        emit pendingArrivalChanged();
    }
    setDirty(false);
    for (RCUModel* model : m_models)
        recall(model); // only the units already present; the rest come with the scan
}

void SessionRecall::scanStarted()
{
    m_scanning = true;
    m_scheduler.schedule(kOpeningScan, this, [this] { m_scanning = false; });
}

SessionState SessionRecall::capture() const
{
    SessionState state = m_state.value_or(SessionState{});
    for (const RCUModel* model : m_models) {
        // An absent unit's panel shows nothing of it: the session keeps its last known state.
        if (model->midi().hardwarePresent())
            state.insert(model->midi().spec().title, model->shownChannels());
    }
    return state;
}

void SessionRecall::saved(SessionState state)
{
    m_state = std::move(state);
    setDirty(false);
}

void SessionRecall::answerArrival(bool send)
{
    if (m_arrivals.isEmpty())
        return;
    RCUModel* model = m_arrivals.takeFirst();
    if (send)
        recall(model);
    emit pendingArrivalChanged();
}

void SessionRecall::onPresence(RCUModel* model, bool present)
{
    if (!m_state)
        return;
    if (!present) {
        // A unit that left is not asked about any more.
        const bool wasAsking = pendingArrival() == model;
        if (m_arrivals.removeAll(model) > 0 && wasAsking)
            emit pendingArrivalChanged();
        return;
    }
    if (m_scanning) {
        recall(model);
    } else if (needsRecall(model) && !m_arrivals.contains(model)) {
        m_arrivals.append(model);
        if (m_arrivals.size() == 1)
            emit pendingArrivalChanged();
    }
}

bool SessionRecall::needsRecall(const RCUModel* model) const
{
    const OrvanMIDI& midi = model->midi();
    // A listen-only unit is never driven; demo panels are not hardware.
    if (!m_state || !midi.spec().verified || !midi.hardwarePresent())
        return false;
    const auto stored = m_state->constFind(midi.spec().title);
    if (stored == m_state->cend())
        return false;
    const QList<ChannelSnapshot> wanted = stored->mid(0, midi.spec().channelCount);
    return wanted != model->shownChannels().mid(0, wanted.size());
}

void SessionRecall::recall(RCUModel* model)
{
    if (needsRecall(model))
        model->requestRecall(Preset{QUuid(), kSessionPresetName, m_state->value(model->midi().spec().title)});
}

} // namespace orvan
