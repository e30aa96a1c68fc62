// Between the systems' own message forms and the words the engine parses.
#include "midi/MidiBytes.h"
#include "midi/MidiVocabulary.h"
#include "midi/alsa/AlsaEvents.h"

#include <gtest/gtest.h>
#include <vector>

using namespace orvan;

namespace {

// The words spelled out in hex, so that a wrong shift or mask in the one builder cannot hide.
TEST(MidiWords, ControlChangesBuildComeApartAndBecomeBytesBitForBit)
{
    struct Built { quint32 built; quint32 word; };
    const Built built[] = {
        {Midi::controlChangeWord(9, 10), 0x20B0090Au},
        {Midi::controlChangeWord(119, 64, 4), 0x20B47740u},
        {Midi::controlChangeWord(0, 0, 15, 3), 0x23BF0000u},
        {Midi::controlChangeWord(128 + 9, 255, 64 + 2, 16), 0x20B2097Fu}, // data keep 7 bits, channel and group 4
    };
    for (const Built& row : built)
        EXPECT_EQ(row.built, row.word) << std::hex << row.word;

    struct Word { quint32 word; std::optional<Midi::WordParts> parts; std::vector<quint8> bytes; };
    const Word words[] = {
        {0x20B0090Au, Midi::WordParts{0, 0xB0, 9, 10}, {0xB0, 9, 10}},
        {0x23BF7F00u, Midi::WordParts{3, 0xBF, 127, 0}, {0xBF, 127, 0}},
        {0x20C00500u, Midi::WordParts{0, 0xC0, 5, 0}, {0xC0, 5}},    // program change: two bytes
        {0x20D14000u, Midi::WordParts{0, 0xD1, 64, 0}, {0xD1, 64}},  // and channel pressure
        {0x20090A00u, Midi::WordParts{0, 0x09, 10, 0}, {}},         // no status byte
        {0x20F00000u, Midi::WordParts{0, 0xF0, 0, 0}, {}},          // not a channel message
        {0x10F80000u, std::nullopt, {}},                            // a system word
        {0x40B00900u, std::nullopt, {}},                            // a MIDI 2.0 word
    };
    for (const Word& row : words) {
        EXPECT_EQ(Midi::partsOf(row.word), row.parts) << std::hex << row.word;
        if (row.parts) {
            EXPECT_EQ(Midi::wordOf(*row.parts), row.word) << std::hex << row.word;
        }
        MidiBytes::Message bytes{};
        const std::size_t size = MidiBytes::toBytes(row.word, bytes);
        EXPECT_EQ(std::vector<quint8>(bytes.begin(), bytes.begin() + qsizetype(size)), row.bytes) << std::hex << row.word;
    }
    EXPECT_EQ(Midi::partsOf(0x20B0FFFFu), (Midi::WordParts{0, 0xB0, 127, 127})) << "data bytes keep seven bits";
}

TEST(JackBytes, EveryCompleteControlChangeInAnEventOnAnyChannelBecomesOneWordInOrder)
{
    std::vector<quint8> longSysEx{0xF0};
    longSysEx.insert(longSysEx.end(), 5000, 0x0B); // data bytes that would read as a Control Change
    longSysEx.push_back(0xF7);
    struct Row { const char* what; std::vector<quint8> bytes; std::vector<quint32> words; };
    const Row rows[] = {
        {"gain of channel 1", {0xB0, 9, 10}, {0x20B0090Au}},
        {"mute of channel 8 on MIDI channel 5", {0xB4, 119, 64}, {0x20B47740u}},
        {"running status", {0xB0, 0x17, 0x7F, 0x17, 0x7F}, {0x20B0177Fu, 0x20B0177Fu}},
        {"clock inside, active sensing after", {0xB0, 9, 0xF8, 10, 0xFE}, {0x20B0090Au}},
        {"note then Control Change", {0x90, 60, 100, 0xB1, 7, 0}, {0x20B10700u}},
        {"program change keeps its own running status", {0xC0, 5, 6, 0xB0, 2, 127}, {0x20B0027Fu}},
        {"pitch bend", {0xE0, 0x00, 0x40}, {}},
        {"short SysEx between", {0xB0, 9, 10, 0xF0, 0x7D, 0x01, 0xF7, 0xB0, 7, 1}, {0x20B0090Au, 0x20B00701u}},
        {"long SysEx", longSysEx, {}},
        {"SysEx cut short by a status", {0xF0, 0x01, 0xB0, 4, 127}, {0x20B0047Fu}},
        {"song position cancels running status", {0xB0, 9, 10, 0xF2, 1, 2, 3}, {0x20B0090Au}},
        {"data with no status", {9, 10}, {}},
        {"truncated", {0xB0, 9}, {}},
        {"a status inside a Control Change starts over", {0xB0, 9, 0x90, 60, 0}, {}},
    };
    for (const Row& row : rows) {
        std::vector<quint32> words;
        MidiBytes::forEachControlChange(std::span<const quint8>(row.bytes), [&](quint32 w) { words.push_back(w); });
        EXPECT_EQ(words, row.words) << row.what;
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

TEST(AlsaEvents, SevenBitControllerEventsOnAnyChannelBecomeWordsAndClientOrPortChangesAreSetupChanges)
{
    struct Row { snd_seq_event_t event; std::optional<quint32> word; bool setupChange; };
    const Row rows[] = {
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, 10), 0x20B0090Au, false},
        {event(SND_SEQ_EVENT_CONTROLLER, 4, 119, 127), 0x20B4777Fu, false},
        {event(SND_SEQ_EVENT_CONTROLLER, 15, 0, 0), 0x20BF0000u, false},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 128, 10), std::nullopt, false},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, 128), std::nullopt, false},
        {event(SND_SEQ_EVENT_CONTROLLER, 0, 9, -1), std::nullopt, false},
        {event(SND_SEQ_EVENT_NOTEON, 0, 9, 10), std::nullopt, false},
        {event(SND_SEQ_EVENT_CONTROL14, 0, 9, 10), std::nullopt, false},
        {event(SND_SEQ_EVENT_PORT_SUBSCRIBED), std::nullopt, false},
        {event(SND_SEQ_EVENT_CLIENT_START), std::nullopt, true}, {event(SND_SEQ_EVENT_CLIENT_EXIT), std::nullopt, true},
        {event(SND_SEQ_EVENT_CLIENT_CHANGE), std::nullopt, true}, {event(SND_SEQ_EVENT_PORT_START), std::nullopt, true},
        {event(SND_SEQ_EVENT_PORT_EXIT), std::nullopt, true},     {event(SND_SEQ_EVENT_PORT_CHANGE), std::nullopt, true},
    };
    for (const Row& row : rows) {
        const auto& e = row.event;
        SCOPED_TRACE(::testing::Message() << int(e.type) << " " << e.data.control.param << " " << e.data.control.value);
        EXPECT_EQ(AlsaEvents::toUmpWord(e), row.word);
        EXPECT_EQ(AlsaEvents::isSetupChange(e), row.setupChange);
    }
}

} // namespace
