#pragma once

#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <gtest/gtest.h>
#include <memory>

namespace orvan::test {

/// A virtual MIDI world with a hand-driven clock. Demo mode starts off in every test.
class EngineFixture : public ::testing::Test {
protected:
    EngineFixture() { DemoMode::shared().setActive(false); }
    ~EngineFixture() override { DemoMode::shared().setActive(false); }

    std::unique_ptr<OrvanMIDI> makeEngine(const DeviceSpec& spec) { return std::make_unique<OrvanMIDI>(spec, midi, clock); }

    /// Runs the work that MIDI callbacks posted to the main thread.
    static void deliverPosted() { QCoreApplication::sendPostedEvents(); }

    void report(VirtualMidiSystem::Device unit, int controller, int value)
    {
        midi.injectControlChange(unit.source, controller, value);
        deliverPosted();
    }

    ManualClock clock;
    VirtualMidiSystem midi{&clock};
};

} // namespace orvan::test
