#pragma once

#include "ChannelState.h"
#include "OrvanSwitch.h"
#include "Preset.h"
#include "Publish.h"

#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <utility>

namespace orvan {

class OrvanMIDI;
class Scheduler;

/// The model of one unit between its engine and its front panel: channel selection, group switch
/// and gain changes, presets, the confirmations that guard +48V and reset, and the status lines.
///
/// Confirmations are state: an operation that needs one sets a pending field, a dialog shows while
/// it is set, its confirm button calls the model and closing it clears the field.
class RCUModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<int> selected READ selected NOTIFY selectedChanged)
    Q_PROPERTY(std::optional<QList<int>> pendingPhantom READ pendingPhantom NOTIFY pendingPhantomChanged)
    Q_PROPERTY(bool pendingReset READ pendingReset NOTIFY pendingResetChanged)
    Q_PROPERTY(std::optional<orvan::Preset> pendingRecall READ pendingRecall NOTIFY pendingRecallChanged)
    Q_PROPERTY(QList<orvan::Preset> presets READ presets NOTIFY presetsChanged)
    Q_PROPERTY(std::optional<qint64> presetIndex READ presetIndex NOTIFY presetIndexChanged)
    Q_PROPERTY(bool savingPreset READ savingPreset WRITE setSavingPreset NOTIFY savingPresetChanged)
    Q_PROPERTY(QString presetNameDraft READ presetNameDraft WRITE setPresetNameDraft NOTIFY presetNameDraftChanged)

public:
    /// Loads the unit's presets, then follows demo mode and the engine's connection (both deliver
    /// their current value at once). `scheduler` paces whole-unit sends.
    RCUModel(OrvanMIDI& midi, Scheduler& scheduler, QObject* parent = nullptr);

    OrvanMIDI& midi() const { return m_midi; }

    // --- Selection and gain ---------------------------------------------------------------------

    /// Selected channels, 0-based, ascending.
    const QList<int>& selected() const { return m_selected; }
    void toggleSelect(int channel);
    void selectAllOrClear();
    /// Single channels in turn, then all of them.
    void cycleSelection();

    /// Toggles switch `s` on `channels`: on if any is off, else off. Switching +48V on only asks
    /// (sets `pendingPhantom`); `confirmPhantom()` sends it.
    void apply(OrvanSwitch s, const QList<int>& channels);
    void applyToSelected(OrvanSwitch s);

    /// Moves every listed channel by one common step, stopping the group at the first range end.
    void adjustGain(qint64 steps, const QList<int>& channels);
    void adjustSelected(qint64 steps);

    /// The knob pointer angle in degrees for a channel's gain (-135 at the range bottom, +135 at the
    /// top); without a channel, the bottom.
    double angle(std::optional<int> channel) const;
    /// The angle of the lowest selected channel.
    double knobAngle() const;

    /// Connected: asks for a reset (`pendingReset`). Not connected: looks for the unit again.
    void powerPressed();

    // --- Presets and confirmations --------------------------------------------------------------

    const Presets& presets() const { return m_presets; }
    std::optional<qint64> presetIndex() const { return m_presetIndex; }
    std::optional<Preset> currentPreset() const;
    /// The channels as the panel shows them, in a preset's form (DI only on a unit that has it).
    QList<ChannelSnapshot> shownChannels() const;

    void beginSave();
    void commitSave();
    void stepPreset(qint64 d);
    /// Recalls the current preset, asking first (`pendingRecall`) when it would switch +48V on.
    void requestRecall();
    /// Recalls `preset` the same way, whatever preset is current (a session's state on open).
    void requestRecall(const Preset& preset);
    /// Sends a preset as a confirmed recall (the recall dialog's confirm button).
    void recall(const Preset& preset);
    void confirmPhantom();
    void resetAll();

    const std::optional<QList<int>>& pendingPhantom() const { return m_pendingPhantom; }
    bool pendingReset() const { return m_pendingReset; }
    const std::optional<Preset>& pendingRecall() const { return m_pendingRecall; }
    bool savingPreset() const { return m_savingPreset; }
    const QString& presetNameDraft() const { return m_presetNameDraft; }

    /// For the dialogs: closing one clears the field that opened it.
    void clearPendingPhantom() { setPendingPhantom(std::nullopt); }
    void clearPendingReset() { setPendingReset(false); }
    void clearPendingRecall() { setPendingRecall(std::nullopt); }
    void setSavingPreset(bool saving) { publish(this, &RCUModel::savingPresetChanged, m_savingPreset, saving); }
    void setPresetNameDraft(const QString& draft)
    {
        publish(this, &RCUModel::presetNameDraftChanged, m_presetNameDraft, draft);
    }

    // --- Undo and redo ---------------------------------------------------------------------------

    /// Undoes or redoes a user action that took the unit's channels from `from` to `to`: every
    /// setting that differs between them is set to its value in `to`; the rest stay as the unit
    /// has them now. Sends only what differs from the panel now, through the same engine calls
    /// as a click, paced like a recall when more than one message goes out. Refused while the
    /// unit cannot be driven or a paced send of this model still runs. Switching +48V on asks
    /// first with the +48V confirmation (`pendingPhantom`); `onApplied` runs once the change is
    /// under way, never on Cancel.
    void restore(const ChannelStates& from, const ChannelStates& to, std::function<void()> onApplied);

    // --- Status ---------------------------------------------------------------------------------

    /// The status display's two lines: connection, then selection and the lowest one's gain.
    std::pair<QString, QString> lcdLines() const;

signals:
    void selectedChanged();
    void pendingPhantomChanged();
    void pendingResetChanged();
    void pendingRecallChanged();
    void presetsChanged();
    void presetIndexChanged();
    void savingPresetChanged();
    void presetNameDraftChanged();
    /// A user action changed the unit's channels (a recall or reset: will change them). `run`
    /// names the control of a gain step, so that a run of steps on it can count as one action;
    /// it is empty for every other action.
    void changedByUser(const orvan::ChannelStates& before, const orvan::ChannelStates& after, const QString& run);

private:
    bool isConnected() const;
    QList<int> validChannels(const QList<int>& channels) const;
    QList<int> allChannels() const;
    qint64 currentGain(int channel) const;
    void send(const QList<ChannelSnapshot>& snapshots, bool phantomConfirmed);
    void adjustGainRun(qint64 steps, const QList<int>& channels, const QString& run);
    bool canDrive() const;
    void reportChange(const ChannelStates& before, const ChannelStates& after, const QString& run = {});
    void confirmRestore();
    ChannelStates restoreGoal(const ChannelStates& from, const ChannelStates& to) const;
    void sendRestore(const ChannelStates& goal, const QList<int>& phantomConfirmed);
    void reloadPresets();
    void onDemo(bool active);
    void onConnection(bool connected);

    void setSelected(QList<int> selected);
    void setPendingPhantom(std::optional<QList<int>> channels);
    void setPendingReset(bool pending) { publish(this, &RCUModel::pendingResetChanged, m_pendingReset, pending); }
    void setPendingRecall(std::optional<Preset> preset)
    {
        publish(this, &RCUModel::pendingRecallChanged, m_pendingRecall, std::move(preset));
    }
    void setPresets(Presets presets) { publish(this, &RCUModel::presetsChanged, m_presets, std::move(presets)); }
    void setPresetIndex(std::optional<qint64> index)
    {
        publish(this, &RCUModel::presetIndexChanged, m_presetIndex, index);
    }

    OrvanMIDI& m_midi;
    Scheduler& m_scheduler;

    QList<int> m_selected;
    std::optional<QList<int>> m_pendingPhantom;
    bool m_pendingReset = false;
    std::optional<Preset> m_pendingRecall;
    Presets m_presets;
    std::optional<qint64> m_presetIndex;
    bool m_savingPreset = false;
    QString m_presetNameDraft;

    /// A restore waiting for the +48V confirmation; it goes with `pendingPhantom`.
    struct PendingRestore {
        ChannelStates from;
        ChannelStates to;
        QList<int> asked; ///< the channels whose +48V the question names
        std::function<void()> onApplied;
    };
    std::optional<PendingRestore> m_pendingRestore;
    int m_runningSends = 0; ///< paced sequences of this model not yet finished
};

} // namespace orvan
