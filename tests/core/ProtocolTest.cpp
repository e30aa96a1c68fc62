#include "EngineFixture.h"

using namespace orvan;
using namespace orvan::test;

namespace {

// The wire map, written out by hand so that a slip in the product's tables cannot hide here: each
// switch's offset in a channel's block of 16 controllers, its "on" value and the field it names.
struct Wire { OrvanSwitch s; int offset; int onValue; bool ChannelState::*field; };
const Wire kWires[] = {
    {OrvanSwitch::di, 0, 2, &ChannelState::di},           {OrvanSwitch::hpf, 1, 127, &ChannelState::hpf},
    {OrvanSwitch::pad, 2, 127, &ChannelState::pad},       {OrvanSwitch::phantom, 4, 127, &ChannelState::phantom},
    {OrvanSwitch::polarity, 5, 127, &ChannelState::polarity}, {OrvanSwitch::mute, 7, 127, &ChannelState::mute},
};
constexpr int kGainOffset = 9;

bool unitHas(const DeviceSpec& spec, OrvanSwitch s)
{
    return (s != OrvanSwitch::di || spec.hasDI) && (s != OrvanSwitch::hpf || spec.hasHPF);
}

} // namespace

class Protocol : public EngineFixture, public ::testing::WithParamInterface<DeviceSpec> {};

TEST_P(Protocol, EverySwitchAndGainOfEveryChannelGoesOutOnItsController)
{
    const DeviceSpec spec = GetParam();
    if (!spec.verified)
        GTEST_SKIP() << "an unverified unit is never driven";
    midi.addDevice(spec.portName);
    auto engine = makeEngine(spec);

    for (int ch = 0; ch < spec.channelCount; ++ch) {
        for (const Wire& w : kWires) {
            for (bool on : {true, false}) {
                if (!unitHas(spec, w.s))
                    continue;
                midi.clearSent();
                engine->set(w.s, ch, on);
                ASSERT_EQ(midi.sent().size(), 1u);
                EXPECT_EQ(midi.sent()[0].word, Midi::controlChangeWord(16 * ch + w.offset, on ? w.onValue : 0))
                    << switchName(w.s) << " ch " << ch;
                EXPECT_EQ(engine->channels()[ch].*w.field, on) << switchName(w.s) << " ch " << ch;
            }
        }
        midi.clearSent();
        engine->setGain(ch, 10);
        ASSERT_EQ(midi.sent().size(), 1u);
        EXPECT_EQ(midi.sent()[0].word, Midi::controlChangeWord(16 * ch + kGainOffset, 10)) << "ch " << ch;
    }
}

TEST_P(Protocol, EveryReportReachesItsFieldOnlyOnAUnitThatHasIt)
{
    const DeviceSpec spec = GetParam();
    const auto unit = midi.addDevice(spec.portName);
    auto engine = makeEngine(spec);

    for (int ch = 0; ch < 8; ++ch) { // reports for channels the unit lacks are dropped, not a crash
        for (const Wire& w : kWires) {
            report(unit, 16 * ch + w.offset, w.onValue);
            if (ch < spec.channelCount) {
                EXPECT_EQ(engine->channels()[ch].*w.field, unitHas(spec, w.s)) << switchName(w.s) << " ch " << ch;
            }
            report(unit, 16 * ch + w.offset, 0);
        }
        for (int unused : {3, 6, 8, 10, 11, 12, 13, 14, 15})
            report(unit, 16 * ch + unused, 127);
        report(unit, 16 * ch + kGainOffset, 17);
        if (ch < spec.channelCount) {
            ChannelState expected; // every switch reported off again, unused offsets ignored
            expected.gainValue = 17;
            EXPECT_EQ(engine->channels()[ch], expected) << "ch " << ch;
        }
    }
    EXPECT_TRUE(midi.sent().empty()) << "reports never cause a send";
}

INSTANTIATE_TEST_SUITE_P(AllUnits, Protocol, ::testing::ValuesIn(Catalogue::all().toVector()),
                         [](const auto& info) { return info.param.title.toStdString(); });

class ProtocolEdges : public EngineFixture {};

TEST_F(ProtocolEdges, OnlyControlChangesCountOnAnyMidiChannelOfAnyGroup)
{
    struct Row { quint32 word; bool mutesChannel8; const char* what; };
    const Row rows[] = {
        {0x20B07740, true, "controller 119 on MIDI channel 1, group 0"},
        {0x29B47740, true, "any MIDI channel of any group"},
        {0x2BB5F7FF, true, "data bytes are read as seven bits"},
        {0x20907740, false, "note on"},
        {0x40B07740, false, "MIDI 2.0 channel voice"},
        {0x10F80000, false, "system real-time"},
    };
    for (const Row& row : rows) {
        VirtualMidiSystem world;
        const auto unit = world.addDevice("Orvan");
        OrvanMIDI engine(Catalogue::orvan(), world, clock);
        world.inject(unit.source, std::span<const quint32>(&row.word, 1));
        deliverPosted();
        EXPECT_EQ(engine.channels()[7].mute, row.mutesChannel8) << row.what;
    }
}

TEST_F(ProtocolEdges, GainIsClampedToTheChannelsRangeAndDIMovesItToTheBottomWithoutAGainMessage)
{
    midi.addDevice("Dunra");
    auto engine = makeEngine(Catalogue::dunra());
    engine->setGain(0, 20);
    midi.clearSent();
    engine->set(OrvanSwitch::di, 0, true);
    EXPECT_EQ(midi.sent().size(), 1u) << "the unit moves the gain by itself";
    EXPECT_EQ(engine->channels()[0].gainValue, 4);

    struct Row { int channel; qint64 asked; int sent; };
    for (const Row row : {Row{0, 30, 12}, Row{0, 1, 4}, Row{1, 1, 6}, Row{1, 99, 24}, Row{1, 15, 15}}) {
        midi.clearSent();
        engine->setGain(row.channel, row.asked);
        ASSERT_EQ(midi.sent().size(), 1u);
        EXPECT_EQ(midi.sent()[0].value(), row.sent) << "asked " << row.asked;
        EXPECT_EQ(engine->channels()[row.channel].gainValue, row.sent);
    }
    engine->set(OrvanSwitch::di, 0, false);
    EXPECT_EQ(engine->channels()[0].gainValue, 6);
}
