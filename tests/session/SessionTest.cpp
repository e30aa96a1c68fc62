#include "ModelRig.h"
#include "PacedSender.h"
#include "SessionFile.h"
#include "SessionRecall.h"
#include "midi/GatedMidiSystem.h"

#include <QTemporaryDir>

namespace orvan::test {
namespace {

using SessionTest = ModelTest;

/// A Dunra and a Melko, and the session's recall over both; the Dunra's clock paces and schedules.
struct SessionRig {
    explicit SessionRig(bool dunraPresent = true)
        : dunra(Catalogue::dunra(), dunraPresent)
        , recall({dunra.model.get(), melko.model.get()}, dunra.clock)
    {
    }
    ModelRig dunra;
    ModelRig melko{Catalogue::melko()};
    SessionRecall recall;
};

const QList<ChannelSnapshot> kVocal{ChannelSnapshot{12, true, false, false, false, false},
                                    ChannelSnapshot{std::nullopt, false, false, true, true, true}};
const QList<ChannelSnapshot> kPhantomOn{ChannelSnapshot{10, false, true, false, false, false}};
const QList<ChannelSnapshot> kMelko{ChannelSnapshot{20, false, true, false, false, std::nullopt}};

// kVocal as the Dunra hears it: DI, +48V, 900 ms, gain/pad/polarity per channel, mute.
const Messages kVocalOnTheWire{{0, kOff}, {16, kDIOn}, {4, kOff}, {20, kOff}, {9, 12}, {2, kOn}, {5, kOff},
                               {18, kOff}, {21, kOn}, {7, kOff}, {23, kOn}};

TEST_F(SessionTest, TheFileKeepsEveryUnitsChannelsAndReadsBackOnlyWhatItWrote)
{
    QTemporaryDir folder(qEnvironmentVariable("ORVAN_TEST_TMP") + QStringLiteral("/sessionXXXXXX"));
    const QString path = SessionFile::pathFor(folder.filePath(QStringLiteral("take-3")));
    EXPECT_EQ(path, folder.filePath(QStringLiteral("take-3.json")));
    EXPECT_EQ(SessionFile::load(path), SessionState{});
    const SessionState state{{QStringLiteral("Dunra"), kVocal}, {QStringLiteral("Melko"), kMelko}};
    ASSERT_TRUE(SessionFile::save(path, state));
    EXPECT_EQ(SessionFile::load(path), state);
    EXPECT_TRUE(SessionFile::encode(state).startsWith("{\n  \"Dunra\" : [\n    {\n      \"di\" : false,\n      \"gainValue\" : 12,"));

    // not an object, channels not a list, a channel without its switches, cut short
    for (const QByteArray& malformed : {QByteArray("[]"), QByteArray(R"({"Dunra": {"mute": false}})"),
                                        QByteArray(R"({"Dunra": [{"gainValue": 6}]})"), SessionFile::encode(state).chopped(3)})
        EXPECT_EQ(SessionFile::decode(malformed), std::nullopt) << malformed.toStdString();
    EXPECT_FALSE(SessionFile::save(folder.filePath(QStringLiteral("gone/take-4.json")), state));
}

TEST_F(SessionTest, OpeningRecallsAPresentUnitPacedAndNeverTheListenOnlyUnit)
{
    SessionRig rig;
    rig.recall.open({{QStringLiteral("Dunra"), kVocal}, {QStringLiteral("Melko"), kMelko}});
    rig.dunra.clock.runUntilIdle();
    rig.melko.clock.runUntilIdle();
    EXPECT_EQ(rig.dunra.messages(), kVocalOnTheWire);
    EXPECT_TRUE(rig.melko.messages().empty());
    EXPECT_EQ(rig.recall.pendingArrival(), nullptr);
    // and a unit that already shows the session's state is sent nothing again
    rig.recall.open(rig.recall.capture());
    rig.dunra.clock.runUntilIdle();
    EXPECT_EQ(rig.dunra.messages().size(), kVocalOnTheWire.size());
    // and +48V waits for the question like any recall, then goes out
    rig.recall.open({{QStringLiteral("Dunra"), kPhantomOn}});
    rig.dunra.clock.runUntilIdle();
    ASSERT_TRUE(rig.dunra.model->pendingRecall());
    EXPECT_EQ(rig.dunra.messages().size(), kVocalOnTheWire.size());
    rig.dunra.model->recall(*rig.dunra.model->pendingRecall());
    rig.dunra.clock.runUntilIdle();
    const Messages sent = rig.dunra.messages();
    EXPECT_EQ(Messages(sent.begin() + qsizetype(kVocalOnTheWire.size()), sent.end()),
              (Messages{{0, kOff}, {4, kOn}, {9, 10}, {2, kOff}, {5, kOff}, {7, kOff}}));
}

TEST_F(SessionTest, AUnitArrivingAfterTheOpeningScanIsAskedAboutAndSentNothingUnlessTheAnswerIsSend)
{
    struct Case { const char* name; std::chrono::milliseconds arrivesAfterScanStart; std::optional<bool> answer; bool recalled; };
    const Case cases[] = {
        {"within the opening scan: present at open", SessionRecall::kOpeningScan - 1ms, std::nullopt, true},
        {"later, cancelled", SessionRecall::kOpeningScan, false, false},
        {"later, unplugged while asked", SessionRecall::kOpeningScan, std::nullopt /* no answer */, false},
        {"later, sent", SessionRecall::kOpeningScan + 1ms, true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SessionRig rig(false); // a session opened without the unit
        rig.recall.open({{QStringLiteral("Dunra"), kVocal}});
        rig.recall.scanStarted();
        rig.dunra.clock.advance(c.arrivesAfterScanStart);
        rig.dunra.plugIn();
        rig.dunra.clock.advance(0ms); // the app's next turn
        if (c.arrivesAfterScanStart >= SessionRecall::kOpeningScan) {
            ASSERT_EQ(rig.recall.pendingArrival(), rig.dunra.model.get());
            rig.dunra.clock.runUntilIdle();
            EXPECT_TRUE(rig.dunra.messages().empty()) << "sent before the answer";
            if (c.answer)
                rig.recall.answerArrival(*c.answer);
            else
                rig.dunra.unplug();
            rig.dunra.clock.advance(0ms); // the app's next turn
            EXPECT_EQ(rig.recall.pendingArrival(), nullptr);
        }
        rig.dunra.clock.runUntilIdle();
        EXPECT_EQ(rig.dunra.messages(), c.recalled ? kVocalOnTheWire : Messages{});
    }
}

TEST_F(SessionTest, AnyChangeOfChannelsIsUnsavedUntilSavedAndAnAbsentUnitKeepsItsSessionState)
{
    SessionRig rig(false);
    rig.recall.open({{QStringLiteral("Dunra"), kVocal}, {QStringLiteral("Melko"), kMelko}});
    EXPECT_FALSE(rig.recall.isDirty());
    // An absent Dunra keeps the session's channels; the present Melko saves what it shows.
    const SessionState captured = rig.recall.capture();
    EXPECT_EQ(captured.value(QStringLiteral("Dunra")), kVocal);
    EXPECT_NE(captured.value(QStringLiteral("Melko")), kMelko);
    rig.melko.reportGain(0, 9);
    EXPECT_TRUE(rig.recall.isDirty());
    rig.recall.saved(rig.recall.capture());
    EXPECT_FALSE(rig.recall.isDirty());
    EXPECT_EQ(rig.recall.capture().value(QStringLiteral("Melko")).front().gainValue, 9);
    rig.melko.reportGain(0, 10);
    rig.recall.open({});
    EXPECT_FALSE(rig.recall.isDirty()) << "a session just opened has nothing unsaved";
}

TEST_F(SessionTest, QuittingStopsPacedSendsButNeverCutsAPhantomBlockInHalf)
{
    struct Case { const char* name; std::chrono::milliseconds quitAt; Messages sent; }; // quitAt: after the first message
    // A confirmed recall of +48V on both channels: DI 0 ms, DI 12, +48V 24 and 36, then 900 ms.
    const Case cases[] = {
        {"before the +48V block", 5ms, {{0, kOff}}},
        {"inside it: the block is finished", 30ms, {{0, kOff}, {16, kOff}, {4, kOn}, {20, kOn}}},
        {"in its settling pause", 100ms, {{0, kOff}, {16, kOff}, {4, kOn}, {20, kOn}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ModelRig rig(Catalogue::dunra());
        rig.model->recall(Preset{QUuid(), QStringLiteral("P"), QList<ChannelSnapshot>(2, kPhantomOn.front())});
        rig.clock.advance(0ms);
        rig.clock.advance(c.quitAt);
        int stopped = 0;
        PacedSender::stopAll([&] { ++stopped; });
        rig.clock.runUntilIdle();
        EXPECT_EQ(rig.messages(), c.sent);
        EXPECT_EQ(stopped, 1);
    }
}

TEST_F(SessionTest, BeforeTheSessionOpensNoMidiClientExistsAndAfterwardsTheEngineFindsItsUnit)
{
    // a unit on the system behind the gate, and an engine over the gate
    ManualClock clock;
    VirtualMidiSystem* behind = nullptr;
    GatedMidiSystem gate([&] {
        auto system = std::make_unique<VirtualMidiSystem>(&clock);
        system->addDevice(Catalogue::dunra().portName);
        behind = system.get();
        return system;
    });
    OrvanMIDI engine(Catalogue::dunra(), gate, clock);
    engine.setGain(0, 8);
    EXPECT_EQ(behind, nullptr) << "a MIDI system was opened before the session";
    EXPECT_FALSE(engine.isConnected());
    gate.start();
    QCoreApplication::processEvents();
    ASSERT_NE(behind, nullptr);
    EXPECT_EQ(behind->clientNames(), QStringList{QStringLiteral("OrvanRCU-Dunra")});
    ASSERT_TRUE(engine.isConnected());
    engine.setGain(0, 8);
    ASSERT_EQ(behind->sentTo(Catalogue::dunra().portName).size(), 1u);
    EXPECT_EQ(behind->sentTo(Catalogue::dunra().portName).front().value(), 8);
}

} // namespace
} // namespace orvan::test
