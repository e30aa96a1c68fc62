#include "RCUModel.h"

#include "ChannelState.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "PresetStorage.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvan {

namespace {

/// The knob sweeps 270 degrees, from -135 at the bottom of the range to +135 at the top.
constexpr double kKnobBottomDegrees = -135.0;
constexpr double kKnobSweepDegrees = 270.0;

/// The channels selected when demo mode turns on, by unit title; any other unit gets none.
struct SampleSelection {
    const char* title;
    QList<int> channels;
};
const SampleSelection kSampleSelections[] = {
    {"Orvan", {3, 4}},
    {"Dunra", {0}},
};

/// Names the control a gain step came from, for telling runs of steps apart.
QString runName(const char* control, const QList<int>& channels)
{
    QStringList numbers;
    for (int c : channels)
        numbers << QString::number(c);
    return QLatin1String(control) + u' ' + numbers.join(u',');
}

} // namespace

RCUModel::RCUModel(OrvanMIDI& midi, Scheduler& scheduler, QObject* parent)
    : QObject(parent)
    , m_midi(midi)
    , m_scheduler(scheduler)
{
    reloadPresets();

    // Both subscriptions end with this model (it is their context) and deliver the current value
    // at once. That first "off" would only read the file just read again, so it is skipped.
    DemoMode::shared().subscribe(this, [this, first = true](bool active) mutable {
        if (!std::exchange(first, false) || active)
            onDemo(active);
    });
    QObject::connect(&m_midi, &OrvanMIDI::isConnectedChanged, this, &RCUModel::onConnection);
    onConnection(m_midi.isConnected());
}

bool RCUModel::isConnected() const { return m_midi.isConnected(); }

QList<int> RCUModel::validChannels(const QList<int>& channels) const
{
    // Indices outside the unit never reach the engine.
    QList<int> valid = channels;
    valid.removeIf([this](int c) { return c < 0 || c >= m_midi.spec().channelCount; });
    return valid;
}

QList<int> RCUModel::allChannels() const
{
    QList<int> all(m_midi.spec().channelCount);
    std::iota(all.begin(), all.end(), 0);
    return all;
}

// --- Selection ----------------------------------------------------------------------------------

void RCUModel::toggleSelect(int channel)
{
    if (!isConnected() || validChannels({channel}).isEmpty())
        return;
    QList<int> next = m_selected;
    if (next.removeAll(channel) == 0)
        next.append(channel);
    setSelected(std::move(next));
}

void RCUModel::selectAllOrClear()
{
    if (!isConnected())
        return;
    setSelected(m_selected.isEmpty() ? allChannels() : QList<int>{});
}

void RCUModel::cycleSelection()
{
    if (!isConnected())
        return;
    const int n = int(m_midi.spec().channelCount);
    if (m_selected.size() == n && n > 0) {
        setSelected({0});
    } else if (m_selected.size() == 1 && m_selected.front() + 1 < n) {
        setSelected({m_selected.front() + 1});
    } else if (m_selected.size() == 1) {
        setSelected(allChannels()); // after the last single channel comes the full set
    } else {
        setSelected({0});
    }
}

// --- Switches -----------------------------------------------------------------------------------

void RCUModel::apply(OrvanSwitch s, const QList<int>& channels)
{
    const QList<int> list = validChannels(channels);
    if (!isConnected() || !m_midi.spec().verified || list.isEmpty())
        return;
    const auto& states = m_midi.channels();
    const bool target = std::ranges::any_of(list, [&](int c) { return !states.at(c).isOn(s); });
    if (s == OrvanSwitch::phantom && target) {
        // +48V can destroy a ribbon microphone: switching it on always waits for confirmation.
        setPendingPhantom(list);
        return;
    }
    const ChannelStates before = m_midi.channels();
    for (int c : list)
        m_midi.set(s, c, target);
    reportChange(before, m_midi.channels());
}

void RCUModel::applyToSelected(OrvanSwitch s) { apply(s, m_selected); }

void RCUModel::confirmPhantom()
{
    if (m_pendingRestore) {
        confirmRestore();
        return;
    }
    if (isConnected() && m_midi.spec().verified && m_pendingPhantom) {
        const ChannelStates before = m_midi.channels();
        for (int c : validChannels(*m_pendingPhantom))
            m_midi.set(OrvanSwitch::phantom, c, true);
        reportChange(before, m_midi.channels());
    }
    setPendingPhantom(std::nullopt);
}

void RCUModel::powerPressed()
{
    if (isConnected())
        setPendingReset(true);
    else
        m_midi.connect();
}

// --- Gain ---------------------------------------------------------------------------------------

qint64 RCUModel::currentGain(int channel) const
{
    const ChannelState& c = m_midi.channels().at(channel);
    return c.gainValue.value_or(gainRange(m_midi.spec(), c.di).lowest);
}

void RCUModel::adjustGain(qint64 steps, const QList<int>& channels)
{
    adjustGainRun(steps, channels, runName("channels", channels));
}

void RCUModel::adjustGainRun(qint64 steps, const QList<int>& channels, const QString& run)
{
    const QList<int> list = validChannels(channels);
    if (list.isEmpty())
        return;
    // One common step for the group, limited by the channel with the least room that way; a
    // channel outside its range makes the room negative and pulls the group back into range.
    qint64 step = steps;
    for (int c : list) {
        const GainRange range = gainRange(m_midi.spec(), m_midi.channels().at(c).di);
        const qint64 g = currentGain(c);
        step = steps > 0 ? std::min(step, range.highest - g) : std::max(step, range.lowest - g);
    }
    if (step == 0)
        return;
    QList<qint64> targets;
    for (int c : list)
        targets.append(currentGain(c) + step);
    const ChannelStates before = m_midi.channels();
    for (qsizetype i = 0; i < list.size(); ++i)
        m_midi.setGain(list[i], targets[i]);
    reportChange(before, m_midi.channels(), run);
}

void RCUModel::adjustSelected(qint64 steps)
{
    // The knob (or the arrows) on the selection is another control than a channel's own readout.
    adjustGainRun(steps, m_selected, runName("selection", m_selected));
}

double RCUModel::angle(std::optional<int> channel) const
{
    if (!channel || validChannels({*channel}).isEmpty())
        return kKnobBottomDegrees;
    const GainRange range = gainRange(m_midi.spec(), m_midi.channels().at(*channel).di);
    const double f = double(currentGain(*channel) - range.lowest) / double(range.highest - range.lowest);
    if (!(f > 0))
        return kKnobBottomDegrees;
    return std::min(f, 1.0) * kKnobSweepDegrees + kKnobBottomDegrees;
}

double RCUModel::knobAngle() const
{
    return angle(m_selected.isEmpty() ? std::nullopt : std::optional<int>(m_selected.front()));
}

// --- Status -------------------------------------------------------------------------------------

std::pair<QString, QString> RCUModel::lcdLines() const
{
    const QString link = isConnected() ? QStringLiteral(" USB: Linked") : QStringLiteral(": not found");
    const QString first = m_midi.spec().title + link;
    if (m_selected.isEmpty())
        return {first, QStringLiteral("Select channel(s)")};

    QString numbers;
    for (int c : m_selected)
        numbers += QString::number(c + 1);
    const auto shown = shownGainDecibels(m_midi.channels().at(m_selected.front()));
    const QString gain = (shown ? QString::number(*shown) : QStringLiteral("--")) + QStringLiteral("dB");
    return {first, QStringLiteral("Ch ") + numbers + u' ' + gain};
}

// --- Lifecycle ----------------------------------------------------------------------------------

void RCUModel::reloadPresets()
{
    Presets loaded = PresetStorage::load(m_midi.spec());
    const bool any = !loaded.isEmpty();
    setPresets(std::move(loaded));
    setPresetIndex(any ? std::optional<qint64>(0) : std::nullopt);
}

void RCUModel::onDemo(bool active)
{
    if (!active) {
        reloadPresets(); // drops whatever was saved in memory during demo mode
        return;
    }
    QList<int> sample;
    for (const SampleSelection& s : kSampleSelections) {
        if (m_midi.spec().title == QLatin1String(s.title))
            sample = s.channels;
    }
    setSelected(validChannels(sample));
}

void RCUModel::onConnection(bool connected)
{
    if (!connected)
        setSelected({});
}

// --- Published fields ---------------------------------------------------------------------------

void RCUModel::setSelected(QList<int> selected)
{
    std::ranges::sort(selected);
    publish(this, &RCUModel::selectedChanged, m_selected, std::move(selected));
}

void RCUModel::setPendingPhantom(std::optional<QList<int>> channels)
{
    // Whatever ends or replaces the question also ends a restore that waited for it.
    m_pendingRestore.reset();
    publish(this, &RCUModel::pendingPhantomChanged, m_pendingPhantom, std::move(channels));
}

} // namespace orvan
