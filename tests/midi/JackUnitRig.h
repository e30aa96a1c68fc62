#pragma once

#include "JackTestServer.h"
#include "UnitRig.h"
#include "midi/CombinedMidiSystem.h"
#include "midi/jack/JackMidiSystem.h"

namespace orvan::test {

/// A JACK frame time as microseconds.
inline std::chrono::microseconds framesToTime(qint64 frames)
{
    return std::chrono::microseconds(frames * std::micro::den / JackTestServer::kSampleRate);
}

/// orvan-unit-sim on the selected JACK server under `displayName`, not yet plugged in.
inline std::unique_ptr<SimulatedUnit> jackUnit(const QString& displayName)
{
    return std::make_unique<SimulatedUnit>(QStringLiteral(ORVAN_UNIT_SIM_PATH), QStringList{QStringLiteral("--name"), displayName},
                                           framesToTime);
}

/// A private jackd on the dummy driver: the app on JackMidiSystem, reached through the
/// CombinedMidiSystem the app always puts in front of it; units as orvan-unit-sim (one
/// client named like the unit, ports "out" and "in" carrying its name), time stamps in JACK
/// frames turned into microseconds.
class JackUnitRig final : public UnitRig {
public:
    /// Starts the server. False if it did not come up.
    bool start() { return m_server.start(); }

    std::unique_ptr<MidiSystem> createSystem() override
    {
        std::vector<std::unique_ptr<MidiSystem>> jackAlone;
        jackAlone.push_back(std::make_unique<JackMidiSystem>());
        return std::make_unique<CombinedMidiSystem>(std::move(jackAlone));
    }
    std::unique_ptr<SimulatedUnit> unit(const QString& displayName) override { return jackUnit(displayName); }
    /// What leaves in one cycle arrives stamped at the start of the next: up to a period late.
    std::chrono::microseconds stampError() const override { return framesToTime(m_server.periodFrames()); }

private:
    JackTestServer m_server{QStringLiteral("battery")};
};

} // namespace orvan::test
