#include "ControlChange.h"
#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;

namespace {

// The wire map, written out by hand so that a slip in the formula cannot hide in the test.
//                                       DI   HPF  Pad  48V  Pol  Mute Gain
constexpr int kControllers[8][7] = {{0, 1, 2, 4, 5, 7, 9},
                                    {16, 17, 18, 20, 21, 23, 25},
                                    {32, 33, 34, 36, 37, 39, 41},
                                    {48, 49, 50, 52, 53, 55, 57},
                                    {64, 65, 66, 68, 69, 71, 73},
                                    {80, 81, 82, 84, 85, 87, 89},
                                    {96, 97, 98, 100, 101, 103, 105},
                                    {112, 113, 114, 116, 117, 119, 121}};
enum Column { DI, HPF, Pad, Phantom, Polarity, Mute, Gain };

Column columnFor(OrvanSwitch s)
{
    switch (s) {
    case OrvanSwitch::di: return DI;
    case OrvanSwitch::hpf: return HPF;
    case OrvanSwitch::pad: return Pad;
    case OrvanSwitch::phantom: return Phantom;
    case OrvanSwitch::polarity: return Polarity;
    case OrvanSwitch::mute: return Mute;
    }
    return Gain;
}

bool unitHas(const DeviceSpec& spec, OrvanSwitch s)
{
    return (s != OrvanSwitch::di || spec.hasDI) && (s != OrvanSwitch::hpf || spec.hasHPF);
}

} // namespace

class Protocol : public EngineFixture, public ::testing::WithParamInterface<DeviceSpec> {};

TEST_P(Protocol, EverySwitchOfEveryChannelSendsItsControllerWithItsOnAndOffValues)
{
    const DeviceSpec spec = GetParam();
    if (!spec.verified)
        GTEST_SKIP() << "an unverified unit is never driven";
    midi.addDevice(spec.portName);
    auto engine = makeEngine(spec);
    ASSERT_TRUE(engine->isConnected());

    for (int ch = 0; ch < spec.channelCount; ++ch) {
        for (OrvanSwitch s : allSwitches) {
            if (!unitHas(spec, s))
                continue;
            for (bool on : {true, false}) {
                midi.clearSent();
                engine->set(s, ch, on);
                ASSERT_EQ(midi.sent().size(), 1u);
                const auto& m = midi.sent().front();
                EXPECT_EQ(m.status(), 0xB0);
                EXPECT_EQ(m.controller(), kControllers[ch][columnFor(s)]) << switchName(s) << " ch " << ch;
                const int onValue = s == OrvanSwitch::di ? 2 : 127;
                EXPECT_EQ(m.value(), on ? onValue : 0) << switchName(s);
                EXPECT_EQ(engine->channels()[ch].isOn(s), on);
            }
        }
    }
}

TEST_P(Protocol, EveryChannelsGainGoesOutOnItsGainController)
{
    const DeviceSpec spec = GetParam();
    if (!spec.verified)
        GTEST_SKIP() << "an unverified unit is never driven";
    midi.addDevice(spec.portName);
    auto engine = makeEngine(spec);

    for (int ch = 0; ch < spec.channelCount; ++ch) {
        midi.clearSent();
        engine->setGain(ch, 10);
        ASSERT_EQ(midi.sent().size(), 1u);
        EXPECT_EQ(midi.sent().front().word, 0x20B00000u + quint32(kControllers[ch][Gain]) * 256 + 10);
    }
}

TEST_P(Protocol, EveryReportOfEveryChannelReachesItsFieldWhenTheUnitHasIt)
{
    const DeviceSpec spec = GetParam();
    const auto unit = midi.addDevice(spec.portName);
    auto engine = makeEngine(spec);

    for (int ch = 0; ch < 8; ++ch) {
        for (OrvanSwitch s : allSwitches) {
            report(unit, kControllers[ch][columnFor(s)], 64);
            const bool applies = ch < spec.channelCount && unitHas(spec, s);
            if (ch < spec.channelCount) {
                EXPECT_EQ(engine->channels()[ch].isOn(s), applies) << switchName(s) << " ch " << ch;
            }
            report(unit, kControllers[ch][columnFor(s)], 0);
            if (ch < spec.channelCount) {
                EXPECT_FALSE(engine->channels()[ch].isOn(s));
            }
        }
        report(unit, kControllers[ch][Gain], 17);
        if (ch < spec.channelCount) {
            EXPECT_EQ(engine->channels()[ch].gainValue, 17);
        }
    }
    EXPECT_EQ(engine->channels().size(), spec.channelCount);
    EXPECT_TRUE(midi.sent().empty()) << "reports never cause a send";
}

INSTANTIATE_TEST_SUITE_P(AllUnits, Protocol, ::testing::ValuesIn(Catalogue::all().toVector()),
                         [](const auto& info) { return info.param.title.toStdString(); });

class ProtocolEdges : public EngineFixture {};

TEST_F(ProtocolEdges, UnusedOffsetsChangeNothing)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    const auto before = engine->channels();
    for (int offset : {3, 6, 8, 10, 11, 12, 13, 14, 15})
        report(unit, 16 + offset, 127);
    EXPECT_EQ(engine->channels(), before);
}

TEST_F(ProtocolEdges, AControlChangeOnAnyMidiChannelOfAnyGroupCounts)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    report(unit, 119, 64, /*midiChannel*/ 4, /*group*/ 9);
    EXPECT_TRUE(engine->channels()[7].mute);
}

TEST_F(ProtocolEdges, NotesAndOtherMessagesAreIgnored)
{
    const auto unit = midi.addDevice("Orvan");
    auto engine = makeEngine(Catalogue::orvan());
    const quint32 words[] = {
        0x20907F40, // note on, note 0x7F: not a Control Change
        0x10F80000, // system real-time (type 1)
        0x40B00700, // MIDI 2.0 channel voice (type 4) with a would-be mute
        0x00000000, // utility
    };
    midi.inject(unit.source, words);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(engine->channels(), defaultChannels(8));
}

TEST(UmpParsing, TakesStatusAndSevenBitDataFromTypeTwoWordsOnly)
{
    const quint32 words[] = {0x2BB5F7FF, 0x30000000, 0x21907F40};
    const auto triples = ControlChange::parseUmpWords(words);
    ASSERT_EQ(triples.size(), 2u);
    EXPECT_EQ(triples[0], (ControlChange::Triple{0xB5, 0x77, 0x7F}));
    EXPECT_TRUE(triples[0].isControlChange());
    EXPECT_EQ(triples[1], (ControlChange::Triple{0x90, 0x7F, 0x40}));
    EXPECT_FALSE(triples[1].isControlChange());
}

TEST_F(ProtocolEdges, DIOnMovesGainToTheBottomOfItsRangeWithoutAGainMessage)
{
    midi.addDevice("Dunra");
    auto engine = makeEngine(Catalogue::dunra());
    engine->setGain(1, 20);
    midi.clearSent();

    engine->set(OrvanSwitch::di, 1, true);

    ASSERT_EQ(midi.sent().size(), 1u);
    EXPECT_EQ(midi.sent()[0].controller(), 16);
    EXPECT_EQ(midi.sent()[0].value(), 2);
    EXPECT_EQ(engine->channels()[1].gainValue, 4);
    EXPECT_EQ(engine->channels()[1].gainFine, 0);

    engine->set(OrvanSwitch::di, 1, false);
    EXPECT_EQ(engine->channels()[1].gainValue, 6);
}

TEST_F(ProtocolEdges, GainIsClampedToTheChannelsRangeBeforeItIsStoredAndSent)
{
    midi.addDevice("Dunra");
    auto engine = makeEngine(Catalogue::dunra());
    engine->set(OrvanSwitch::di, 0, true);
    struct Row {
        int channel;
        qint64 asked;
        int sent;
    };
    for (const Row row : {Row{0, 30, 12}, Row{0, 1, 4}, Row{1, 1, 6}, Row{1, 99, 24}, Row{1, 15, 15}}) {
        midi.clearSent();
        engine->setGain(row.channel, row.asked);
        ASSERT_EQ(midi.sent().size(), 1u);
        EXPECT_EQ(midi.sent()[0].value(), row.sent) << "asked " << row.asked;
        EXPECT_EQ(engine->channels()[row.channel].gainValue, row.sent);
    }
}
