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

} // namespace

UnitNameMatch matchUnitName(const QString& endpointName, const QString& unitName)
{
    if (unitName.isEmpty())
        return UnitNameMatch::none;
    if (endpointName == unitName)
        return UnitNameMatch::direct;

    // Greedy owner: a card's long name may hold colons, the marker is the last one.
    static const QRegularExpression bridged(
        QStringLiteral("^(?:Midi-Bridge:)?(.+):\\((?:capture|playback)_\\d+\\) .*$"));
    const auto m = bridged.match(endpointName);
    return m.hasMatch() && ownerIsUnit(m.captured(1), bridgeSpelling(unitName)) ? UnitNameMatch::bridged
                                                                                 : UnitNameMatch::none;
}

} // namespace orvan
