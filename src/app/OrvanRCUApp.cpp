#include "OrvanRCUApp.h"

#include "Catalogue.h"
#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "UndoHistory.h"
#include "midi/MidiSystem.h"

namespace orvan {

OrvanRCUApp::OrvanRCUApp(std::unique_ptr<MidiSystem> midiSystem, const Clock& clock, Scheduler& scheduler)
    : m_midiSystem(std::move(midiSystem))
{
    // Order matters: an engine that finds its unit switches demo mode off before the later ones
    // subscribe.
    m_orvan = std::make_unique<OrvanMIDI>(Catalogue::orvan(), *m_midiSystem, clock);
    m_orvanModel = std::make_unique<RCUModel>(*m_orvan, scheduler);
    m_dunra = std::make_unique<OrvanMIDI>(Catalogue::dunra(), *m_midiSystem, clock);
    m_dunraModel = std::make_unique<RCUModel>(*m_dunra, scheduler);
    m_melko = std::make_unique<OrvanMIDI>(Catalogue::melko(), *m_midiSystem, clock);
    m_melkoModel = std::make_unique<RCUModel>(*m_melko, scheduler);
    m_undoHistory = std::make_unique<UndoHistory>(clock);
    for (RCUModel* model : {m_orvanModel.get(), m_dunraModel.get(), m_melkoModel.get()})
        m_undoHistory->follow(*model);
}

// Members go in reverse order of declaration: the history, which observes the models, goes first,
// then the models, which observe the engines.
OrvanRCUApp::~OrvanRCUApp() = default;

} // namespace orvan
