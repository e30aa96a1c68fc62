#pragma once

#include "JackTestServer.h"
#include "UnitRig.h"

namespace orvan::test {

/// orvan-unit-sim on the selected JACK server under `displayName`, not yet plugged in.
std::unique_ptr<SimulatedUnit> jackUnit(const QString& displayName, QStringList options = {});

/// A private jackd on the dummy driver: the app on JackMidiSystem, units as orvan-unit-sim (one
/// client named like the unit, ports "out" and "in" carrying its name), time stamps in JACK
/// frames turned into microseconds.
class JackUnitRig final : public UnitRig {
public:
    JackUnitRig();
    /// Starts the server. False if it did not come up.
    bool start();

    std::unique_ptr<MidiSystem> createSystem() override;
    std::unique_ptr<SimulatedUnit> unit(const QString& displayName, QStringList options = {}) override;
    /// What leaves in one cycle arrives stamped at the start of the next: up to a period late.
    std::chrono::microseconds stampError() const override;

private:
    JackTestServer m_server;
};

} // namespace orvan::test
