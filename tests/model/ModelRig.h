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
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <ostream>
#include <tuple>

// Test failures show names, snapshots and presets as text (-1: absent) rather than as raw bytes.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
namespace orvan {
inline void PrintTo(const ChannelSnapshot& s, std::ostream* os)
{
    *os << "{gain " << s.gainValue.value_or(-1) << ", pad " << s.pad << ", phantom " << s.phantom << ", polarity " << s.polarity
        << ", mute " << s.mute << ", di " << (s.di ? int(*s.di) : -1) << '}';
}
inline void PrintTo(const Preset& p, std::ostream* os) { *os << '"' << p.name.toStdString() << "\" (" << p.channels.size() << " channels)"; }
} // namespace orvan

namespace orvan::test {

using namespace std::chrono_literals;
/// One message as the unit sees it: when (ms after a given start), controller, value.
using Wire = std::tuple<qint64, int, int>;
using Messages = std::vector<std::pair<int, int>>;

// The values a unit sees, written out rather than taken from the code under test.
constexpr int kOn = 127;
constexpr int kOff = 0;
constexpr int kDIOn = 2;

/// A unit's engine and model over the virtual MIDI system, driven by one manual clock that stamps
/// every send.
class ModelRig {
public:
    explicit ModelRig(const DeviceSpec& spec, bool present = true)
        : spec(spec)
    {
        if (present)
            device = system.addDevice(spec.portName);
        engine = std::make_unique<OrvanMIDI>(spec, system, clock);
        model = std::make_unique<RCUModel>(*engine, clock);
    }

    /// The unit reports a switch or a gain, as if turned on its front.
    void report(int channel, OrvanSwitch s, bool on) { inject(ControlChange::controller(channel, s), ControlChange::switchValue(s, on)); }
    void reportGain(int channel, int value) { inject(ControlChange::controller(channel, ControlChange::gainOffset), value); }
    void unplug() { system.removeDevice(device); QCoreApplication::processEvents(); }
    void plugIn() { device = system.addDevice(spec.portName); QCoreApplication::processEvents(); }
    void select(const QList<int>& channels) { for (int ch : channels) model->toggleSelect(ch); }

    /// Everything sent to this unit so far, with times relative to `since`.
    std::vector<Wire> wire(std::chrono::nanoseconds since = 0ns) const
    {
        std::vector<Wire> out;
        for (const auto& m : system.sentTo(spec.portName))
            out.emplace_back(std::chrono::duration_cast<std::chrono::milliseconds>(m.time - since).count(), m.controller(), m.value());
        return out;
    }
    Messages messages() const
    {
        Messages out;
        for (const auto& [ms, controller, value] : wire())
            out.emplace_back(controller, value);
        return out;
    }

    DeviceSpec spec;
    ManualClock clock;
    VirtualMidiSystem system{&clock};
    VirtualMidiSystem::Device device{};
    std::unique_ptr<OrvanMIDI> engine;
    std::unique_ptr<RCUModel> model;

private:
    void inject(int controller, int value) {
        system.injectControlChange(device.source, controller, value);
        QCoreApplication::processEvents();
    }
};

/// Every test starts with an empty preset folder and with demo mode off (it is process-wide), and leaves it off.
class ModelTest : public ::testing::Test {
protected:
    ModelTest()
    {
        DemoMode::shared().setActive(false);
        QDir(QFileInfo(PresetStorage::url(Catalogue::orvan())).path()).removeRecursively(); // every unit's file and leftovers
    }
    ~ModelTest() override { DemoMode::shared().setActive(false); }
};

} // namespace orvan::test
