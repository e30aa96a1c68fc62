#include "UnitName.h"

#include <QRegularExpression>

namespace orvan {

namespace {

/// The unit's name as the bridge writes it into its port names.
QString bridgeSpelling(const QString& name)
{
    static const QString kept = QStringLiteral(" /_:()[]");
    QString spelled = name;
    for (QChar& c : spelled) {
        if (!(c.isLetterOrNumber() && c.unicode() < 0x80) && !kept.contains(c))
            c = QLatin1Char('-');
    }
    return spelled;
}

/// Whether the owner part of a bridged port name is the unit.
bool ownerIsUnit(const QString& owner, const QString& unit)
{
    if (owner == unit)
        return true;
    // The client's name and its card's number, for a card without a long name.
    static const QRegularExpression cardNumber(QStringLiteral("^(.*) \\d+$"));
    if (const auto m = cardNumber.match(owner); m.hasMatch() && m.captured(1) == unit)
        return true;
    // A card's long name: "<product> at <where>" or "<vendor> <product> at <where>".
    const qsizetype at = owner.indexOf(QLatin1String(" at "));
    if (at < 0)
        return false;
    const QString product = owner.left(at);
    return product == unit || product.endsWith(QLatin1Char(' ') + unit);
}

/// Whether the client-and-port part of a bridged port name in PipeWire's newer spelling is the
/// unit's: its client's name, then the port's name without that name in front ("Orvan MIDI 1" for
/// a USB unit whose port is "Orvan MIDI 1"). A number right after the name is another unit's.
bool clientAndPortIsUnit(const QString& clientAndPort, const QString& unit)
{
    if (clientAndPort == unit)
        return true;
    const QString rest = clientAndPort.mid(unit.size());
    return clientAndPort.startsWith(unit) && rest.size() > 1 && rest.front() == QLatin1Char(' ') && !rest.at(1).isDigit();
}

} // namespace

UnitNameMatch matchUnitName(const QString& endpointName, const QString& unitName)
{
    if (unitName.isEmpty())
        return UnitNameMatch::none;
    if (endpointName == unitName)
        return UnitNameMatch::direct;

    const QString unit = bridgeSpelling(unitName);
    // Greedy owner: a card's long name may hold colons, the marker is the last one.
    static const QRegularExpression withOwner(
        QStringLiteral("^(?:Midi-Bridge:)?(.+):\\((?:capture|playback)_\\d+\\) .*$"));
    if (const auto m = withOwner.match(endpointName); m.hasMatch())
        return ownerIsUnit(m.captured(1), unit) ? UnitNameMatch::bridged : UnitNameMatch::none;
    static const QRegularExpression withAddress(
        QStringLiteral("^(?:Midi-Bridge:)?(?:\\[\\d+:\\d+\\] )?(.+) \\((?:capture|playback)\\)$"));
    if (const auto m = withAddress.match(endpointName); m.hasMatch())
        return clientAndPortIsUnit(m.captured(1), unit) ? UnitNameMatch::bridged : UnitNameMatch::none;
    return UnitNameMatch::none;
}

} // namespace orvan
