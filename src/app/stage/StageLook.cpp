#include "StageLook.h"

#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "OrvanRCUApp.h"
#include "RCUModel.h"

#include <QDataStream>
#include <QIODevice>

namespace orvan::StageLook {

namespace {

template <typename T>
void writeOptional(QDataStream& out, const std::optional<T>& value)
{
    out << value.has_value();
    if (value)
        out << *value;
}

void writeUnit(QDataStream& out, const RCUModel& model)
{
    const OrvanMIDI& engine = model.midi();
    out << engine.isConnected() << engine.hardwarePresent() << engine.demoLoaded();
    out << qint64(engine.channels().size());
    for (const ChannelState& channel : engine.channels()) {
        writeOptional(out, channel.gainValue);
        out << channel.gainFine << channel.pad << channel.phantom << channel.polarity << channel.mute << channel.di
            << channel.hpf;
    }
    out << model.selected() << model.knobAngle();
    // Only the current preset is on show: saving another one leaves the look as it was.
    writeOptional(out, model.presetIndex());
    const std::optional<Preset> current = model.currentPreset();
    out << current.has_value() << (current ? current->name : QString());
    const auto [first, second] = model.lcdLines();
    out << first << second;
    out << model.pendingPhantom().has_value() << model.pendingReset() << model.pendingRecall().has_value()
        << model.savingPreset() << model.presetNameDraft();
}

} // namespace

QByteArray describe(const OrvanRCUApp& app)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << DemoMode::shared().active();
    for (const RCUModel* model : {&app.orvanModel(), &app.dunraModel(), &app.melkoModel()})
        writeUnit(out, *model);
    return bytes;
}

} // namespace orvan::StageLook
