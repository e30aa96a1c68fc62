#pragma once

#include <QObject>
#include <memory>

namespace orvan {

class Clock;
class MidiSystem;
class OrvanMIDI;
class RCUModel;
class Scheduler;
class UndoHistory;

/// Owns, for the life of the process, the MIDI system, the three engines and their models, built
/// in catalogue order: Orvan, Dunra, Melko, and the one undo history across them.
class OrvanRCUApp final : public QObject {
public:
    OrvanRCUApp(std::unique_ptr<MidiSystem> midiSystem, const Clock& clock, Scheduler& scheduler);
    ~OrvanRCUApp() override;

    RCUModel& orvanModel() const { return *m_orvanModel; }
    RCUModel& dunraModel() const { return *m_dunraModel; }
    RCUModel& melkoModel() const { return *m_melkoModel; }
    MidiSystem& midiSystem() const { return *m_midiSystem; }
    UndoHistory& undoHistory() const { return *m_undoHistory; }

private:
    std::unique_ptr<MidiSystem> m_midiSystem;
    std::unique_ptr<OrvanMIDI> m_orvan, m_dunra, m_melko;
    std::unique_ptr<RCUModel> m_orvanModel, m_dunraModel, m_melkoModel;
    std::unique_ptr<UndoHistory> m_undoHistory;
};

} // namespace orvan
