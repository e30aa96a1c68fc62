#include "ModelRig.h"

#include "UndoHistory.h"

#include <map>
#include <random>

namespace orvan::test {
namespace {

constexpr int kOperations = 20000;
constexpr std::uint32_t kSeed = 20261123;
/// Longer than any whole-unit sequence: a confirmed recall or undo may switch +48V on until then.
constexpr auto kConfirmedRecallWindow = 2500ms;

/// Every unit's engine and model on one virtual MIDI system, driven at random like a very impatient
/// user. It keeps what each physical unit has been told (and reported itself), so it knows which
/// +48V messages really switch a microphone's power on, and which of those were confirmed.
struct PhantomSafety {
    struct Unit {
        DeviceSpec spec;
        std::optional<VirtualMidiSystem::Device> device;
        std::unique_ptr<OrvanMIDI> engine;
        std::unique_ptr<RCUModel> model;
        std::vector<bool> phantomOn;                        // the unit's own +48V state, kept across plugging
        std::map<int, std::chrono::nanoseconds> grantUntil; // channel -> end of a confirmed recall or undo
        QList<int> confirmedNow;                            // channels confirmed by this step's confirmPhantom()
        std::optional<QList<int>> asked;                    // the +48V question as last seen
        bool askedByHistory = false;                        // it came from an undo or redo: a paced send may follow
    };

    PhantomSafety()
    {
        for (const DeviceSpec& spec : Catalogue::all()) {
            Unit& u = *units.emplace_back(std::make_unique<Unit>());
            u.spec = spec;
            if (spec.verified) // the listen-only unit starts unplugged
                u.device = system.addDevice(spec.portName);
            u.engine = std::make_unique<OrvanMIDI>(spec, system, clock);
            u.model = std::make_unique<RCUModel>(*u.engine, clock);
            u.phantomOn.assign(std::size_t(spec.channelCount), false);
            history.follow(*u.model);
        }
    }

    int pick(int n) { return int(rng() % std::uint32_t(n)); }
    bool coin() { return pick(2) == 0; }
    int channel(const Unit& u) { return pick(int(u.spec.channelCount) + 2) - 1; } // now and then outside the unit
    QList<int> channels(const Unit& u)
    {
        QList<int> list(pick(4));
        for (int& c : list)
            c = channel(u);
        return list;
    }
    OrvanSwitch anySwitch() { return allSwitches[std::size_t(pick(int(allSwitches.size())))]; }

    void writeHandEditedFile(const Unit& u)
    {
        QList<ChannelSnapshot> snapshots(pick(int(u.spec.channelCount) + 4));
        for (ChannelSnapshot& s : snapshots)
            s = {coin() ? std::optional<qint64>(pick(30)) : std::nullopt, coin(), coin(), coin(), coin(), coin() ? std::optional<bool>(coin()) : std::nullopt};
        PresetStorage::save({Preset{QUuid::createUuid(), QStringLiteral("Hand"), snapshots}}, u.spec);
    }

    void confirmPhantom(Unit& u)
    {
        u.confirmedNow = u.model->pendingPhantom().value_or(QList<int>{});
        if (u.askedByHistory && !u.confirmedNow.isEmpty()) {
            ++historyConfirmations;
            for (int c : u.confirmedNow)
                u.grantUntil[c] = clock.now() + kConfirmedRecallWindow;
        }
        u.model->confirmPhantom();
    }

    /// Notes which questions an undo or redo asked, after any operation.
    void noteQuestions(bool byHistory)
    {
        for (const auto& u : units) {
            if (u->model->pendingPhantom() != u->asked)
                u->askedByHistory = byHistory && u->model->pendingPhantom();
            u->asked = u->model->pendingPhantom();
        }
    }

    /// An undo or redo, and often at once an answer to the question it asked.
    void undoOrRedo(void (UndoHistory::*op)())
    {
        (history.*op)();
        noteQuestions(true);
        for (const auto& u : units) {
            if (!u->askedByHistory || !u->asked)
                continue;
            switch (pick(3)) {
            case 0: confirmPhantom(*u); break;
            case 1: u->model->clearPendingPhantom(); break;
            default: break; // left open for a later operation
            }
        }
    }

    void confirmRecall(Unit& u)
    {
        if (const auto p = u.model->pendingRecall()) {
            for (int c = 0; c < p->channels.size(); ++c) {
                if (p->channels[c].phantom)
                    u.grantUntil[c] = clock.now() + kConfirmedRecallWindow;
            }
            u.model->recall(*p);
        }
    }

    /// The unit's own front panel reports any controller of its channels.
    void unitReports(Unit& u)
    {
        const int controller = pick(int(u.spec.channelCount) * ControlChange::kControllersPerChannel);
        const int value = coin() ? ControlChange::kSwitchOnValue : pick(30);
        if (controller % ControlChange::kControllersPerChannel == ControlChange::phantomOffset)
            u.phantomOn[std::size_t(controller / ControlChange::kControllersPerChannel)] = value != 0;
        system.injectControlChange(u.device->source, controller, value);
        QCoreApplication::processEvents();
    }

    void plug(Unit& u)
    {
        if (u.device)
            system.removeDevice(*std::exchange(u.device, std::nullopt));
        else
            u.device = system.addDevice(u.spec.portName);
        QCoreApplication::processEvents();
    }

    /// One random operation; returns its name for the failure message.
    const char* step()
    {
        Unit& u = *units[std::size_t(pick(int(units.size())))];
        RCUModel& m = *u.model;
        switch (pick(31)) {
        case 0: m.toggleSelect(channel(u)); return "toggleSelect";
        case 1: m.selectAllOrClear(); return "selectAllOrClear";
        case 2: m.cycleSelection(); return "cycleSelection";
        case 3: m.apply(anySwitch(), channels(u)); return "apply";
        case 4: m.applyToSelected(coin() ? OrvanSwitch::phantom : anySwitch()); return "applyToSelected";
        case 5: m.adjustGain(pick(11) - 5, channels(u)); return "adjustGain";
        case 6: m.adjustSelected(pick(11) - 5); return "adjustSelected";
        case 7: m.powerPressed(); return "powerPressed";
        case 8: case 9: confirmPhantom(u); return "confirmPhantom";
        case 10: m.clearPendingPhantom(); return "decline +48V";
        case 11: m.beginSave(); return "beginSave";
        case 12: m.setPresetNameDraft(QStringLiteral("P%1").arg(pick(4))); return "edit name";
        case 13: m.commitSave(); m.setSavingPreset(false); return "commitSave";
        case 14: m.stepPreset(coin() ? 1 : -1); return "stepPreset";
        case 15: m.requestRecall(); return "requestRecall";
        case 16: confirmRecall(u); return "confirm recall";
        case 17: m.clearPendingRecall(); return "decline recall";
        case 18: m.resetAll(); return "resetAll";
        case 19: m.clearPendingReset(); return "decline reset";
        case 20: DemoMode::shared().setActive(coin()); return "demo";
        case 21: plug(u); return "plug";
        case 22: if (u.device) unitReports(u); return "unit report";
        case 23: writeHandEditedFile(u); return "hand-edited file";
        case 24: clock.advance(std::chrono::milliseconds(pick(40))); return "short wait";
        case 25: clock.advance(std::chrono::milliseconds(pick(1500))); return "long wait";
        case 26: case 29: undoOrRedo(&UndoHistory::undo); return "undo";
        case 27: undoOrRedo(&UndoHistory::redo); return "redo";
        case 28: for (int n = pick(6); n > 0; --n) m.adjustSelected(coin() ? 1 : -1); return "wheel run";
        default: QCoreApplication::processEvents(); return "events";
        }
    }

    ManualClock clock;
    VirtualMidiSystem system{&clock};
    std::vector<std::unique_ptr<Unit>> units;
    UndoHistory history{clock};
    std::size_t historyConfirmations = 0;
    std::mt19937 rng{kSeed};
};

using PhantomSafetyTest = ModelTest;

TEST_F(PhantomSafetyTest, NoPhantomSwitchOnEverLeavesWithoutAConfirmationAndTheListenOnlyUnitHearsNothing)
{
    PhantomSafety rig;
    std::size_t checked = 0, phantomOnMessages = 0, switchOns = 0;
    for (int i = 0; i < kOperations; ++i) {
        const char* operation = rig.step();
        rig.noteQuestions(operation == std::string_view("undo") || operation == std::string_view("redo"));
        // every new message goes to a driven unit and a channel it has, and every message that
        // switches a unit's +48V from off to on was confirmed
        for (const auto& sent = rig.system.sent(); checked < sent.size(); ++checked) {
            const auto& m = sent[checked];
            const auto found = std::ranges::find_if(rig.units, [&](const auto& u) { return u->spec.portName == m.destinationName; });
            ASSERT_NE(found, rig.units.end());
            PhantomSafety::Unit& unit = **found;
            const int channel = m.controller() / ControlChange::kControllersPerChannel;
            ASSERT_TRUE(unit.spec.verified && channel < unit.spec.channelCount) << "after " << operation << " (operation " << i << ")";
            if (m.controller() % ControlChange::kControllersPerChannel != ControlChange::phantomOffset)
                continue;
            const bool on = m.value() != 0;
            if (on && !unit.phantomOn[std::size_t(channel)]) {
                ++switchOns;
                const auto grant = unit.grantUntil.find(channel);
                const bool recalled = grant != unit.grantUntil.end() && m.time <= grant->second;
                ASSERT_TRUE(unit.confirmedNow.contains(channel) || recalled)
                    << unit.spec.title.toStdString() << " channel " << channel << ": +48V switched on unconfirmed after " << operation
                    << " (operation " << i << ")";
            }
            phantomOnMessages += on ? 1 : 0;
            unit.phantomOn[std::size_t(channel)] = on;
        }
        for (const auto& u : rig.units)
            u->confirmedNow.clear();
    }
    // and the run was not trivially safe: +48V really was switched on, and held on, many times,
    // also by undo and redo
    EXPECT_GT(switchOns, 10u);
    EXPECT_GT(rig.historyConfirmations, 3u);
    EXPECT_GT(phantomOnMessages, switchOns);
}

} // namespace
} // namespace orvan::test
