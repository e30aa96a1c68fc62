#pragma once

#include "midi/MidiSystem.h"

#include <QProcess>
#include <QStringList>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orvan::test {

/// Processes Qt events until `condition` holds or a generous deadline passes; for waiting on the
/// MIDI system and the processes around it, never for timing.
bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds timeout = std::chrono::seconds(20));

/// One message as the simulated unit received it, stamped by the unit's own clock.
struct ReceivedMessage {
    std::chrono::microseconds time;
    QString bytes; ///< "b0 09 0a"
};

/// One running orvan-unit-sim: a unit that can be plugged in and pulled out.
class SimulatedUnit {
public:
    SimulatedUnit(QString program, QStringList arguments, std::function<std::chrono::microseconds(qint64)> stampToTime)
        : m_program(std::move(program)), m_arguments(std::move(arguments)), m_stampToTime(std::move(stampToTime)) {}
    ~SimulatedUnit() { unplug(); }

    /// Starts it and waits until its ports exist. False if it did not come up.
    bool plug();
    /// Pulled out the way a user quits it (SIGTERM), or all at once (SIGKILL); waits until gone.
    void unplug(bool abruptly = false);
    void yank() { unplug(true); }

    /// Every message received so far, in order.
    std::vector<ReceivedMessage> received() const;
    QStringList receivedBytes() const;
    /// Makes the unit send a MIDI byte stream ("b0 09 0a f8 ..."), one message every `spacing`.
    void play(const QString& hexBytes, std::chrono::microseconds spacing = std::chrono::microseconds(0));

private:
    QString m_program;
    QStringList m_arguments;
    std::function<std::chrono::microseconds(qint64)> m_stampToTime;
    std::unique_ptr<QProcess> m_process;
    QString m_output;
};

/// A MIDI system with simulated units on it: what the integration battery runs against, so the
/// same scenarios prove every system the app speaks.
class UnitRig {
public:
    virtual ~UnitRig() = default;
    /// The app's side: the MIDI system the engines are built on.
    virtual std::unique_ptr<MidiSystem> createSystem() = 0;
    /// A unit under `displayName`, not yet plugged in.
    virtual std::unique_ptr<SimulatedUnit> unit(const QString& displayName) = 0;
    /// How far a unit's time stamp may sit from the moment a message really arrived.
    virtual std::chrono::microseconds stampError() const = 0;
};

} // namespace orvan::test
