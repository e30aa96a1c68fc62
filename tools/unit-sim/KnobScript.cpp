#include "KnobScript.h"

#include "ControlChange.h"
#include "DeviceSpec.h"

#include <QStringList>

namespace orvan {

std::optional<KnobTurn> parseKnobTurn(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != 3)
        return std::nullopt;
    bool ok[3] = {};
    const KnobTurn turn{parts[0].toInt(&ok[0]), parts[1].toInt(&ok[1]), parts[2].toInt(&ok[2])};
    if (!ok[0] || !ok[1] || !ok[2] || turn.channel < 0 || turn.fromDecibels < 0 || turn.toDecibels < 0)
        return std::nullopt;
    return turn;
}

std::vector<MidiBytes::Message> knobReports(const KnobTurn& turn)
{
    std::vector<MidiBytes::Message> reports;
    const int direction = turn.toDecibels > turn.fromDecibels ? 1 : -1;
    const auto controller = quint8(ControlChange::controller(turn.channel, ControlChange::gainOffset));
    for (int db = turn.fromDecibels; db != turn.toDecibels;) {
        db += direction;
        reports.push_back({Midi::kControlChange, controller, quint8(db / kDecibelsPerGainStep)});
    }
    return reports;
}

} // namespace orvan
