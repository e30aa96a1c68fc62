#pragma once

#include "Catalogue.h"
#include "ControlChange.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "PresetStorage.h"
#include "RCUModel.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <QFile>
#include <chrono>
#include <memory>
#include <ostream>

namespace orvan::test {

/// One message as the unit sees it: when (ms after the rig's start), which controller, which value.
struct Wire {
    qint64 ms;
    int controller;
    int value;
    bool operator==(const Wire&) const = default;
    friend std::ostream& operator<<(std::ostream& os, const Wire& w)
    {
        return os << "{" << w.ms << " ms, CC " << w.controller << " = " << w.value << "}";
    }
};

/// A unit's engine and model over the virtual MIDI system, all driven by one manual clock, so that
/// every send is stamped with the clock's time.
class ModelRig {
public:
    explicit ModelRig(const DeviceSpec& spec, bool present = true)
        : m_spec(spec)
    {
        if (present)
            device = system.addDevice(spec.portName);
        engine = std::make_unique<OrvanMIDI>(spec, system, clock);
        model = std::make_unique<RCUModel>(*engine, clock);
    }

    /// The unit reports a switch state, as if turned on its front.
    void report(int channel, OrvanSwitch s, bool on)
    {
        system.injectControlChange(device.source, ControlChange::controller(channel, s), ControlChange::switchValue(s, on));
        QCoreApplication::processEvents();
    }
    void reportGain(int channel, int value)
    {
        system.injectControlChange(device.source, ControlChange::controller(channel, ControlChange::gainOffset), value);
        QCoreApplication::processEvents();
    }

    void unplug()
    {
        system.removeDevice(device);
        QCoreApplication::processEvents();
    }
    void plugIn()
    {
        device = system.addDevice(m_spec.portName);
        QCoreApplication::processEvents();
    }

    /// Everything sent to this unit so far, with times relative to `since`.
    std::vector<Wire> wire(std::chrono::nanoseconds since = std::chrono::nanoseconds(0)) const
    {
        std::vector<Wire> out;
        for (const auto& m : system.sentTo(m_spec.portName)) {
            out.push_back({std::chrono::duration_cast<std::chrono::milliseconds>(m.time - since).count(),
                           m.controller(), m.value()});
        }
        return out;
    }

    DeviceSpec m_spec;
    ManualClock clock;
    VirtualMidiSystem system{&clock};
    VirtualMidiSystem::Device device{};
    std::unique_ptr<OrvanMIDI> engine;
    std::unique_ptr<RCUModel> model;
};

/// Demo mode is process-wide: every test starts and ends with it off.
class DemoOff {
public:
    DemoOff() { DemoMode::shared().setActive(false); }
    ~DemoOff() { DemoMode::shared().setActive(false); }
};

} // namespace orvan::test

namespace orvan::test {

/// (controller, value) pairs sent to a unit, without times.
inline std::vector<std::pair<int, int>> messages(const ModelRig& rig)
{
    std::vector<std::pair<int, int>> out;
    for (const Wire& w : rig.wire())
        out.emplace_back(w.controller, w.value);
    return out;
}

/// Removes every unit's preset file, so each test starts from none.
inline void removePresetFiles()
{
    for (const DeviceSpec& spec : Catalogue::all())
        QFile::remove(PresetStorage::url(spec));
}

} // namespace orvan::test
