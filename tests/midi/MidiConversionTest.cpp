// Between the systems' own message forms and the words the engine parses.
#include "ControlChange.h"
#include "KnobScript.h"
#include "midi/MidiBytes.h"
#include "midi/alsa/AlsaEvents.h"

#include <gtest/gtest.h>
#include <vector>

using namespace orvan;

namespace {

struct BytesRow {
    const char* what;
    std::vector<quint8> bytes;
    std::vector<quint32> words;
};

class JackBytesBecomeWords : public testing::TestWithParam<BytesRow> {};

TEST_P(JackBytesBecomeWords, EveryCompleteControlChangeInAnEventOnAnyChannelBecomesOneWordInOrder)
{
    const BytesRow& row = GetParam();
    std::vector<quint32> words;

    MidiBytes::forEachControlChange(std::span<const quint8>(row.bytes), [&](quint32 w) { words.push_back(w); });

    EXPECT_EQ(words, row.words) << row.what;
}

const std::vector<quint8> kLongSysEx = [] {
    std::vector<quint8> bytes{0xF0};
    bytes.insert(bytes.end(), 5000, 0x0B); // data bytes that would read as a Control Change
    bytes.push_back(0xF7);
    return bytes;
}();

INSTANTIATE_TEST_SUITE_P(Rows, JackBytesBecomeWords, testing::Values(
    BytesRow{"gain of channel 1", {0xB0, 9, 10}, {0x20B0090Au}},
    BytesRow{"mute of channel 8 on MIDI channel 5", {0xB4, 119, 64}, {0x20B47740u}},
    BytesRow{"running status", {0xB0, 0x17, 0x7F, 0x17, 0x7F}, {0x20B0177Fu, 0x20B0177Fu}},
    BytesRow{"clock before", {0xF8, 0xB0, 9, 10}, {0x20B0090Au}},
    BytesRow{"clock inside", {0xB0, 9, 0xF8, 10}, {0x20B0090Au}},
    BytesRow{"active sensing after", {0xB0, 9, 10, 0xFE}, {0x20B0090Au}},
    BytesRow{"note then Control Change", {0x90, 60, 100, 0xB1, 7, 0}, {0x20B10700u}},
    BytesRow{"program change keeps its own running status", {0xC0, 5, 6, 0xB0, 2, 127}, {0x20B0027Fu}},
    BytesRow{"pitch bend", {0xE0, 0x00, 0x40}, {}},
    BytesRow{"short SysEx between", {0xB0, 9, 10, 0xF0, 0x7D, 0x01, 0xF7, 0xB0, 7, 1}, {0x20B0090Au, 0x20B00701u}},
    BytesRow{"long SysEx", kLongSysEx, {}},
    BytesRow{"SysEx cut short by a status", {0xF0, 0x01, 0xB0, 4, 127}, {0x20B0047Fu}},
    BytesRow{"song position cancels running status", {0xB0, 9, 10, 0xF2, 1, 2, 3}, {0x20B0090Au}},
    BytesRow{"data with no status", {9, 10}, {}},
    BytesRow{"truncated", {0xB0, 9}, {}},
    BytesRow{"a status inside a Control Change starts over", {0xB0, 9, 0x90, 60, 0}, {}},
    BytesRow{"empty", {}, {}}));

TEST(MidiBytes, WordsTheEngineSendsBecomeTheProtocolsThreeBytes)
{
    // given the engine's word for gain 10 on channel 1, and one for +48V on on channel 8
    const quint32 gain = ControlChange::umpWord(9, 10);
    const quint32 phantom = ControlChange::umpWord(116, 127);
    MidiBytes::Message bytes{};

    // when / then
    ASSERT_EQ(MidiBytes::toBytes(gain, bytes), 3u);
    EXPECT_EQ(bytes, (MidiBytes::Message{0xB0, 9, 10}));
    ASSERT_EQ(MidiBytes::toBytes(phantom, bytes), 3u);
    EXPECT_EQ(bytes, (MidiBytes::Message{0xB0, 116, 127}));
    EXPECT_EQ(MidiBytes::toBytes(0x10F80000u, bytes), 0u) << "a system word is never sent";
    EXPECT_EQ(MidiBytes::toBytes(0x20C00500u, bytes), 2u) << "program change has one data byte";
}

snd_seq_event_t controllerEvent(int channel, unsigned param, int value)
{
    snd_seq_event_t e;
    snd_seq_ev_clear(&e);
    snd_seq_ev_set_controller(&e, channel, param, value);
    return e;
}

snd_seq_event_t eventOfType(snd_seq_event_type_t type)
{
    snd_seq_event_t e;
    snd_seq_ev_clear(&e);
    e.type = type;
    return e;
}

TEST(AlsaEvents, ControllerEventsOnAnyChannelReachTheEngineAsTheSameTriplesAsUmp)
{
    // given controller events as the sequencer delivers them
    const std::vector<snd_seq_event_t> events{controllerEvent(0, 9, 10), controllerEvent(4, 119, 64),
                                              controllerEvent(15, 0, 2)};
    std::vector<quint32> words;

    // when
    for (const auto& e : events)
        words.push_back(AlsaEvents::toUmpWord(e).value_or(0));

    // then the engine's own parser reads controller and value back
    const auto triples = ControlChange::parseUmpWords(words);
    ASSERT_EQ(triples.size(), 3u);
    EXPECT_EQ(triples[0], (ControlChange::Triple{0xB0, 9, 10}));
    EXPECT_EQ(triples[1], (ControlChange::Triple{0xB4, 119, 64}));
    EXPECT_EQ(triples[2], (ControlChange::Triple{0xBF, 0, 2}));
}

TEST(AlsaEvents, EverythingButSevenBitControllerEventsIsIgnored)
{
    snd_seq_event_t note;
    snd_seq_ev_clear(&note);
    snd_seq_ev_set_noteon(&note, 0, 60, 100);
    const std::vector<std::pair<const char*, snd_seq_event_t>> ignored{
        {"note on", note},
        {"controller above 127", controllerEvent(0, 128, 10)},
        {"value above 127", controllerEvent(0, 9, 128)},
        {"negative value", controllerEvent(0, 9, -1)},
        {"port start", eventOfType(SND_SEQ_EVENT_PORT_START)},
        {"14-bit controller", eventOfType(SND_SEQ_EVENT_CONTROL14)},
    };
    for (const auto& [what, e] : ignored)
        EXPECT_FALSE(AlsaEvents::toUmpWord(e)) << what;
}

TEST(AlsaEvents, EveryClientOrPortComingGoingOrChangingIsASetupChange)
{
    const std::vector<std::pair<snd_seq_event_type_t, bool>> rows{
        {SND_SEQ_EVENT_CLIENT_START, true}, {SND_SEQ_EVENT_CLIENT_EXIT, true},
        {SND_SEQ_EVENT_CLIENT_CHANGE, true}, {SND_SEQ_EVENT_PORT_START, true},
        {SND_SEQ_EVENT_PORT_EXIT, true},     {SND_SEQ_EVENT_PORT_CHANGE, true},
        {SND_SEQ_EVENT_PORT_SUBSCRIBED, false}, {SND_SEQ_EVENT_CONTROLLER, false},
    };
    for (const auto& [type, expected] : rows)
        EXPECT_EQ(AlsaEvents::isSetupChange(eventOfType(type)), expected) << int(type);
}

TEST(AlsaEvents, OutgoingWordsBecomeControllerEventsOnChannelOne)
{
    // given
    const quint32 word = ControlChange::umpWord(119, 0);

    // when
    const auto event = AlsaEvents::fromUmpWord(word);

    // then
    ASSERT_TRUE(event);
    EXPECT_EQ(event->type, SND_SEQ_EVENT_CONTROLLER);
    EXPECT_EQ(event->data.control.channel, 0);
    EXPECT_EQ(event->data.control.param, 119u);
    EXPECT_EQ(event->data.control.value, 0);
    EXPECT_FALSE(AlsaEvents::fromUmpWord(0x20903C64u)) << "a note is not a Control Change";
}

TEST(KnobScript, ATurnReportsTheCoarseStepOncePerDecibelDetent)
{
    // given a turn of channel 2 from 27 dB up to 32 dB, and one back down to 29 dB
    const auto up = parseKnobTurn(QStringLiteral("1:27:32"));
    const auto down = parseKnobTurn(QStringLiteral("1:32:29"));
    ASSERT_TRUE(up && down);

    // when
    const auto upReports = knobReports(*up);
    const auto downReports = knobReports(*down);

    // then every report is on channel 2's gain controller, carrying dB / 3
    std::vector<int> upValues, downValues;
    for (const auto& r : upReports) {
        EXPECT_EQ(r[0], 0xB0);
        EXPECT_EQ(r[1], 25);
        upValues.push_back(r[2]);
    }
    for (const auto& r : downReports)
        downValues.push_back(r[2]);
    EXPECT_EQ(upValues, (std::vector<int>{9, 9, 10, 10, 10}));
    EXPECT_EQ(downValues, (std::vector<int>{10, 10, 9}));
    EXPECT_FALSE(parseKnobTurn(QStringLiteral("1:27")));
    EXPECT_FALSE(parseKnobTurn(QStringLiteral("a:27:30")));
}

} // namespace
