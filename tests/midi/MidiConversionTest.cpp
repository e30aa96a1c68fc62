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
    BytesRow{"a status inside a Control Change starts over", {0xB0, 9, 0x90, 60, 0}, {}}));

TEST(MidiBytes, WordsTheEngineSendsBecomeTheProtocolsThreeBytes)
{
    const std::vector<std::pair<quint32, std::vector<quint8>>> rows{
        {ControlChange::umpWord(9, 10), {0xB0, 9, 10}},     // gain 10 on channel 1
        {ControlChange::umpWord(116, 127), {0xB0, 116, 127}}, // +48V on, channel 8
        {0x20C00500u, {0xC0, 5}},                            // program change: one data byte
        {0x10F80000u, {}},                                   // a system word is never sent
    };
    for (const auto& [word, expected] : rows) {
        MidiBytes::Message bytes{};
        const std::size_t size = MidiBytes::toBytes(word, bytes);
        EXPECT_EQ(std::vector<quint8>(bytes.begin(), bytes.begin() + size), expected) << std::hex << word;
    }
}

snd_seq_event_t event(snd_seq_event_type_t type, int channel = 0, unsigned param = 0, int value = 0)
{
    snd_seq_event_t e;
    snd_seq_ev_clear(&e);
    snd_seq_ev_set_controller(&e, channel, param, value);
    e.type = type;
    return e;
}

TEST(AlsaEvents, SevenBitControllerEventsOnAnyChannelAndNothingElseBecomeWords)
{
    const std::vector<std::pair<snd_seq_event_t, std::optional<quint32>>> rows{
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, 10), 0x20B0090Au},
        {event(SND_SEQ_EVENT_CONTROLLER, 4, 119, 127), 0x20B4777Fu},
        {event(SND_SEQ_EVENT_CONTROLLER, 15, 0, 0), 0x20BF0000u},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 128, 10), std::nullopt},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, 128), std::nullopt},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, -1), std::nullopt},
        {event(SND_SEQ_EVENT_NOTEON, 0, 9, 10), std::nullopt},
        {event(SND_SEQ_EVENT_CONTROL14, 0, 9, 10), std::nullopt},
        {event(SND_SEQ_EVENT_PORT_START), std::nullopt},
    };
    for (const auto& [e, word] : rows)
        EXPECT_EQ(AlsaEvents::toUmpWord(e), word) << int(e.type) << " " << e.data.control.param << " " << e.data.control.value;
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
        EXPECT_EQ(AlsaEvents::isSetupChange(event(type)), expected) << int(type);
}

TEST(AlsaEvents, OutgoingWordsBecomeControllerEventsOnChannelOne)
{
    const auto sent = AlsaEvents::fromUmpWord(ControlChange::umpWord(119, 0));

    ASSERT_TRUE(sent);
    EXPECT_EQ(sent->type, SND_SEQ_EVENT_CONTROLLER);
    EXPECT_EQ(sent->data.control.channel, 0);
    EXPECT_EQ(sent->data.control.param, 119u);
    EXPECT_EQ(sent->data.control.value, 0);
    EXPECT_FALSE(AlsaEvents::fromUmpWord(0x20903C64u)) << "a note is not a Control Change";
}

TEST(KnobScript, ATurnReportsTheCoarseStepOncePerDecibelDetent)
{
    // a turn of channel 2 from 27 dB up to 32 dB, and one back down to 29 dB, each report on
    // channel 2's gain controller carrying dB / 3
    const std::vector<std::pair<QString, std::vector<int>>> rows{{"1:27:32", {9, 9, 10, 10, 10}}, {"1:32:29", {10, 10, 9}}};
    for (const auto& [script, values] : rows) {
        const auto turn = parseKnobTurn(script);
        ASSERT_TRUE(turn);
        std::vector<MidiBytes::Message> expected;
        for (int value : values)
            expected.push_back({0xB0, 25, quint8(value)});
        EXPECT_EQ(knobReports(*turn), expected) << script.toStdString();
    }
    EXPECT_FALSE(parseKnobTurn(QStringLiteral("1:27")));
    EXPECT_FALSE(parseKnobTurn(QStringLiteral("a:27:30")));
}

} // namespace
