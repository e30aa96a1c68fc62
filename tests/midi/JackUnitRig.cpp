#include "JackUnitRig.h"

#include "midi/jack/JackMidiSystem.h"

namespace orvan::test {

namespace {

constexpr qint64 kMicrosecondsPerSecond = 1000000;

std::chrono::microseconds framesToTime(qint64 frames)
{
    return std::chrono::microseconds(frames * kMicrosecondsPerSecond / JackTestServer::kSampleRate);
}

} // namespace

std::unique_ptr<SimulatedUnit> jackUnit(const QString& displayName, QStringList options)
{
    return std::make_unique<SimulatedUnit>(QStringLiteral(ORVAN_UNIT_SIM_PATH),
                                           QStringList{QStringLiteral("--name"), displayName} + options, framesToTime);
}

JackUnitRig::JackUnitRig()
    : m_server(QStringLiteral("battery"))
{
}

bool JackUnitRig::start()
{
    return m_server.start();
}

std::unique_ptr<MidiSystem> JackUnitRig::createSystem()
{
    return std::make_unique<JackMidiSystem>();
}

std::unique_ptr<SimulatedUnit> JackUnitRig::unit(const QString& displayName, QStringList options)
{
    return jackUnit(displayName, std::move(options));
}

std::chrono::microseconds JackUnitRig::stampError() const
{
    return framesToTime(m_server.periodFrames());
}

} // namespace orvan::test
