#pragma once

#include "ChannelState.h"

#include <QObject>
#include <QString>
#include <chrono>
#include <vector>

namespace orvan {

class Clock;
class RCUModel;

/// One undo history for every unit, in memory only. Each step is one user action on one unit,
/// kept as that unit's channels before and after it; a run of gain steps on one control, with
/// pauses under `kRunPause`, is one action. Undo sets the settings the action changed back to
/// their values before it, redo to their values after it, both through `RCUModel::restore`; the
/// history moves only once the model went ahead (never on a +48V Cancel). A unit that goes away
/// takes its steps with it, since a replugged unit may hold anything.
class UndoHistory final : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t kDepth = 100;
    static constexpr std::chrono::milliseconds kRunPause{1000};

    explicit UndoHistory(const Clock& clock, QObject* parent = nullptr);

    /// Records `model`'s user actions from now on.
    void follow(RCUModel& model);

    void undo();
    void redo();

    std::size_t undoCount() const { return m_done; }
    std::size_t redoCount() const { return m_steps.size() - m_done; }

private:
    struct Step {
        RCUModel* model;
        ChannelStates before;
        ChannelStates after;
        QString run;
        std::chrono::nanoseconds lastChange;
        quint64 id;
    };

    void record(RCUModel* model, const ChannelStates& before, const ChannelStates& after, const QString& run);
    void forget(const RCUModel* model);
    void restore(const Step& step, bool undoing);

    const Clock& m_clock;
    std::vector<Step> m_steps;
    std::size_t m_done = 0;  ///< steps below this index are done, the rest can be redone
    bool m_runOpen = false;  ///< the last step recorded may still grow by a run of gain steps
    quint64 m_nextId = 0;
};

} // namespace orvan
