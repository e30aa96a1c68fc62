#include "ModelRig.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>

namespace orvan::test {
namespace {

using namespace std::chrono_literals;

constexpr int kOperations = 20000;
constexpr std::uint32_t kSeed = 20261123;
/// Longer than any whole-unit sequence: a confirmed recall may switch +48V on until then.
constexpr auto kConfirmedRecallWindow = 2500ms;

/// Every unit's engine and model on one virtual MIDI system, driven at random like a very
/// impatient user. The watcher keeps what each physical unit has been told (and reported itself),
/// so it knows which +48V messages really switch a microphone's power on.
class PhantomSafety {
public:
    struct Unit {
        DeviceSpec spec;
        std::unique_ptr<OrvanMIDI> engine;
        std::unique_ptr<RCUModel> model;
        std::optional<VirtualMidiSystem::Device> device;
        std::vector<bool> phantomOnUnit;                    // the unit's own +48V state, kept across plugging
        std::map<int, std::chrono::nanoseconds> grantUntil; // channel -> end of a confirmed recall
        std::vector<int> confirmedNow;                      // channels confirmed by this step's confirmPhantom()
    };

    PhantomSafety()
    {
        for (const DeviceSpec& spec : Catalogue::all()) {
            auto unit = std::make_unique<Unit>();
            unit->spec = spec;
            if (spec.title != QStringLiteral("Melko"))
                unit->device = system.addDevice(spec.portName);
            unit->engine = std::make_unique<OrvanMIDI>(spec, system, clock);
            unit->model = std::make_unique<RCUModel>(*unit->engine, clock);
            unit->phantomOnUnit.assign(std::size_t(spec.channelCount), false);
            units.push_back(std::move(unit));
        }
    }

    int pick(int n) { return int(rng() % std::uint32_t(n)); }
    bool coin() { return pick(2) == 0; }

    QList<int> randomChannels(const Unit& u)
    {
        QList<int> list;
        const int count = pick(4);
        for (int i = 0; i < count; ++i)
            list.append(pick(int(u.spec.channelCount) + 2) - 1); // now and then outside the unit
        return list;
    }

    OrvanSwitch randomSwitch() { return allSwitches[std::size_t(pick(int(allSwitches.size())))]; }

    void writeHandEditedFile(const Unit& u)
    {
        QList<ChannelSnapshot> channels;
        const int count = pick(int(u.spec.channelCount) + 4);
        for (int i = 0; i < count; ++i) {
            channels.append(ChannelSnapshot{coin() ? std::optional<qint64>(pick(30)) : std::nullopt, coin(), coin(), coin(), coin(),
                                            coin() ? std::optional<bool>(coin()) : std::nullopt});
        }
        PresetStorage::save({Preset{QUuid::createUuid(), QStringLiteral("Hand"), channels}}, u.spec);
    }

    /// One random operation; returns its name for the failure message.
    const char* step()
    {
        Unit& u = *units[std::size_t(pick(int(units.size())))];
        RCUModel& m = *u.model;
        switch (pick(27)) {
        case 0: m.toggleSelect(pick(int(u.spec.channelCount) + 2) - 1); return "toggleSelect";
        case 1: m.selectAllOrClear(); return "selectAllOrClear";
        case 2: m.cycleSelection(); return "cycleSelection";
        case 3: m.apply(randomSwitch(), randomChannels(u)); return "apply";
        case 4: m.applyToSelected(coin() ? OrvanSwitch::phantom : randomSwitch()); return "applyToSelected";
        case 5: m.adjustGain(pick(11) - 5, randomChannels(u)); return "adjustGain";
        case 6: m.adjustSelected(pick(11) - 5); return "adjustSelected";
        case 7: m.powerPressed(); return "powerPressed";
        case 8:
        case 9: {
            if (m.pendingPhantom())
                u.confirmedNow = std::vector<int>(m.pendingPhantom()->begin(), m.pendingPhantom()->end());
            m.confirmPhantom();
            return "confirmPhantom";
        }
        case 10: m.clearPendingPhantom(); return "decline +48V";
        case 11: m.beginSave(); return "beginSave";
        case 12: m.setPresetNameDraft(QStringLiteral("P%1").arg(pick(4))); return "edit name";
        case 13: m.commitSave(); m.setSavingPreset(false); return "commitSave";
        case 14: m.stepPreset(coin() ? 1 : -1); return "stepPreset";
        case 15: m.requestRecall(); return "requestRecall";
        case 16: {
            if (const auto p = m.pendingRecall()) {
                for (int c = 0; c < p->channels.size(); ++c) {
                    if (p->channels[c].phantom)
                        u.grantUntil[c] = clock.now() + kConfirmedRecallWindow;
                }
                m.recall(*p);
            }
            return "confirm recall";
        }
        case 17: m.clearPendingRecall(); return "decline recall";
        case 18: m.resetAll(); return "resetAll";
        case 19: m.clearPendingReset(); return "decline reset";
        case 20: DemoMode::shared().setActive(coin()); return "demo";
        case 21: {
            if (u.device) {
                system.removeDevice(*u.device);
                u.device.reset();
            } else {
                u.device = system.addDevice(u.spec.portName);
            }
            QCoreApplication::processEvents();
            return "plug";
        }
        case 22: {
            // The unit's own front panel: reports any controller of its channels.
            if (u.device) {
                const int controller = pick(int(u.spec.channelCount) * ControlChange::kControllersPerChannel);
                const int value = coin() ? ControlChange::kSwitchOnValue : pick(30);
                if (controller % ControlChange::kControllersPerChannel == ControlChange::phantomOffset)
                    u.phantomOnUnit[std::size_t(controller / ControlChange::kControllersPerChannel)] = value != 0;
                system.injectControlChange(u.device->source, controller, value);
                QCoreApplication::processEvents();
            }
            return "unit report";
        }
        case 23: writeHandEditedFile(u); return "hand-edited file";
        case 24: clock.advance(std::chrono::milliseconds(pick(40))); return "short wait";
        case 25: clock.advance(std::chrono::milliseconds(pick(1500))); return "long wait";
        default: QCoreApplication::processEvents(); return "events";
        }
    }

    ManualClock clock;
    VirtualMidiSystem system{&clock};
    std::vector<std::unique_ptr<Unit>> units;
    std::mt19937 rng{kSeed};
};

class PhantomSafetyTest : public ::testing::Test {
protected:
    void SetUp() override { removePresetFiles(); }
    DemoOff demoOff;
};

TEST_F(PhantomSafetyTest, NoPhantomSwitchOnEverLeavesWithoutAConfirmationAndTheListenOnlyUnitHearsNothing)
{
    // given
    PhantomSafety rig;
    std::size_t checked = 0;
    std::size_t phantomOnMessages = 0;
    std::size_t switchOns = 0;
    for (int i = 0; i < kOperations; ++i) {
        // when
        const char* operation = rig.step();
        // then: every new message goes to a driven unit and a channel it has, and every message
        // that switches a unit's +48V from off to on was confirmed
        const auto& sent = rig.system.sent();
        for (; checked < sent.size(); ++checked) {
            const auto& m = sent[checked];
            ASSERT_NE(m.destinationName, QStringLiteral("Melko")) << "after " << operation << " (operation " << i << ")";
            const auto found = std::ranges::find_if(rig.units, [&](const auto& u) { return u->spec.portName == m.destinationName; });
            ASSERT_NE(found, rig.units.end());
            PhantomSafety::Unit& unit = **found;
            const int channel = m.controller() / ControlChange::kControllersPerChannel;
            ASSERT_LT(channel, unit.spec.channelCount);
            if (m.controller() % ControlChange::kControllersPerChannel != ControlChange::phantomOffset)
                continue;
            const bool on = m.value() != 0;
            const bool state = unit.phantomOnUnit[std::size_t(channel)];
            if (on && !state) {
                ++switchOns;
                const bool confirmed = std::ranges::find(unit.confirmedNow, channel) != unit.confirmedNow.end();
                const auto grant = unit.grantUntil.find(channel);
                const bool recalled = grant != unit.grantUntil.end() && m.time <= grant->second;
                ASSERT_TRUE(confirmed || recalled) << unit.spec.title.toStdString() << " channel " << channel
                                                   << ": +48V switched on unconfirmed after " << operation << " (operation " << i << ")";
            }
            phantomOnMessages += on ? 1 : 0;
            unit.phantomOnUnit[std::size_t(channel)] = on;
        }
        for (const auto& u : rig.units)
            u->confirmedNow.clear();
    }
    // and the run was not trivially safe: +48V really was switched on, and held on, many times
    EXPECT_GT(switchOns, 10u);
    EXPECT_GT(phantomOnMessages, switchOns);
}

} // namespace
} // namespace orvan::test
