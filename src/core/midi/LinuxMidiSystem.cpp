#include "LinuxMidiSystem.h"

#include "CombinedMidiSystem.h"
#include "QuitOnTermination.h"
#include "alsa/AlsaMidiSystem.h"
#include "jack/JackMidiSystem.h"

namespace orvan {

std::unique_ptr<MidiSystem> createLinuxMidiSystem(bool jackWaitsForStart)
{
    // The app's JACK clients must be closed however it is asked to end (see quitOnTermination).
    quitOnTermination();
    std::vector<std::unique_ptr<MidiSystem>> systems;
    systems.push_back(std::make_unique<AlsaMidiSystem>());
    systems.push_back(std::make_unique<JackMidiSystem>(jackWaitsForStart));
    return std::make_unique<CombinedMidiSystem>(std::move(systems));
}

} // namespace orvan
