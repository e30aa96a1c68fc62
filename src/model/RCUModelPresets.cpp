// RCUModel's presets: saving the panel under a name, stepping through the list, recalling one
// (asking first when it would switch +48V on) and resetting the unit. The rest of the model is in
// RCUModel.cpp.
#include "RCUModel.h"

#include "ChannelState.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "PacedSender.h"
#include "PresetStorage.h"

#include <QUuid>
#include <algorithm>

namespace orvan {

namespace {

const QString kDefaultPresetName = QStringLiteral("Preset %1");

bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }

/// Removes spaces and tabs (not line breaks) at both ends.
QString trimBlanks(const QString& s)
{
    qsizetype begin = 0;
    qsizetype end = s.size();
    while (begin < end && isBlank(s[begin]))
        ++begin;
    while (end > begin && isBlank(s[end - 1]))
        --end;
    return s.mid(begin, end - begin);
}

} // namespace

QList<ChannelSnapshot> RCUModel::shownChannels() const
{
    QList<ChannelSnapshot> snapshots;
    for (const ChannelState& c : m_midi.channels())
        snapshots.append(ChannelSnapshot{c.gainValue, c.pad, c.phantom, c.polarity, c.mute,
                                         m_midi.spec().hasDI ? std::optional<bool>(c.di) : std::nullopt});
    return snapshots;
}

std::optional<Preset> RCUModel::currentPreset() const
{
    if (!m_presetIndex || *m_presetIndex < 0 || *m_presetIndex >= m_presets.size())
        return std::nullopt;
    return m_presets.at(*m_presetIndex);
}

void RCUModel::beginSave()
{
    if (!isConnected())
        return;
    const auto current = currentPreset();
    setPresetNameDraft(current ? current->name : kDefaultPresetName.arg(m_presets.size() + 1));
    setSavingPreset(true);
}

void RCUModel::commitSave()
{
    if (!isConnected())
        return;
    const QString name = trimBlanks(m_presetNameDraft);
    if (name.isEmpty())
        return;
    const QList<ChannelSnapshot> snapshot = shownChannels();

    Presets next = m_presets;
    const auto found = std::ranges::find_if(next, [&](const Preset& p) { return p.name == name; });
    qint64 index = 0;
    if (found != next.end()) {
        found->channels = snapshot;
        index = found - next.begin();
    } else {
        next.append(Preset{QUuid::createUuid(), name, snapshot});
        index = next.size() - 1;
    }
    setPresets(next);
    setPresetIndex(index);

    // Demo presets live in memory only; the file comes back when demo mode ends.
    if (!DemoMode::shared().active())
        PresetStorage::save(m_presets, m_midi.spec());
}

void RCUModel::stepPreset(qint64 d)
{
    if (!isConnected() || m_presets.isEmpty())
        return;
    const qint64 n = m_presets.size();
    const qint64 base = m_presetIndex.value_or(0);
    // Double remainder so that any step, however large or negative, lands inside the list.
    setPresetIndex(((base + d) % n + n) % n);
}

void RCUModel::requestRecall()
{
    if (const auto preset = currentPreset())
        requestRecall(*preset);
}

void RCUModel::requestRecall(const Preset& preset)
{
    if (!isConnected())
        return;
    const auto& states = m_midi.channels();
    // Only channels the unit has are asked about; extra entries of a hand-edited preset are never sent.
    const qsizetype n = std::min<qsizetype>(preset.channels.size(), states.size());
    bool switchesPhantomOn = false;
    for (qsizetype i = 0; i < n; ++i)
        switchesPhantomOn = switchesPhantomOn || (preset.channels[i].phantom && !states[i].phantom);
    if (switchesPhantomOn) {
        setPendingRecall(preset);
        return;
    }
    // Nothing would switch on, so the recall needs no question: +48V may only be held where it is on.
    setPendingRecall(std::nullopt);
    send(preset.channels, false);
}

void RCUModel::recall(const Preset& preset)
{
    setPendingRecall(std::nullopt);
    if (isConnected())
        send(preset.channels, true);
}

void RCUModel::resetAll()
{
    setPendingReset(false);
    constexpr qint64 kResetGain = kMicGainLowest; // 18 dB
    const bool hasDI = m_midi.spec().hasDI;
    QList<ChannelSnapshot> snapshots;
    for (qint64 c = 0; c < m_midi.spec().channelCount; ++c)
        snapshots.append(ChannelSnapshot{kResetGain, false, false, false, false,
                                         hasDI ? std::optional<bool>(false) : std::nullopt});
    send(snapshots, false);
}

void RCUModel::send(const QList<ChannelSnapshot>& snapshots, bool phantomConfirmed)
{
    std::vector<PacedSender::Step> steps = PacedSender::plan(m_midi.spec(), snapshots);
    // The sequence takes a while: what it will leave behind is the action's outcome.
    if (canDrive())
        reportChange(m_midi.channels(), PacedSender::applied(m_midi.spec(), m_midi.channels(), steps));
    ++m_runningSends;
    PacedSender::start(m_midi, m_scheduler, this, std::move(steps),
                       phantomConfirmed ? PhantomConsent::confirmed : PhantomConsent::keepOnOnly,
                       [this] { --m_runningSends; });
}

} // namespace orvan
