#include "LinuxMidiSystem.h"

#include "CombinedMidiSystem.h"
#include "alsa/AlsaMidiSystem.h"
#include "jack/JackMidiSystem.h"

namespace orvan {

std::unique_ptr<MidiSystem> createLinuxMidiSystem(bool jackWaitsForStart)
{
    std::vector<std::unique_ptr<MidiSystem>> systems;
    systems.push_back(std::make_unique<AlsaMidiSystem>());
    systems.push_back(std::make_unique<JackMidiSystem>(jackWaitsForStart));
    return std::make_unique<CombinedMidiSystem>(std::move(systems));
}

} // namespace orvan
