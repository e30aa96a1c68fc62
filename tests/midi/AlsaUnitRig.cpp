#include "AlsaUnitRig.h"

#include "midi/alsa/AlsaMidiSystem.h"

namespace orvan::test {

std::unique_ptr<MidiSystem> AlsaUnitRig::createSystem()
{
    return std::make_unique<AlsaMidiSystem>();
}

std::unique_ptr<SimulatedUnit> AlsaUnitRig::unit(const QString& displayName, QStringList options)
{
    return std::make_unique<SimulatedUnit>(
        QStringLiteral(ORVAN_UNIT_SIM_PATH),
        QStringList{QStringLiteral("--alsa"), QStringLiteral("--name"), displayName} + options,
        [](qint64 microseconds) { return std::chrono::microseconds(microseconds); });
}

} // namespace orvan::test
