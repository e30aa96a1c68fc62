#include "MidiStream.h"

#include "midi/MidiBytes.h"

namespace orvan {

namespace {

constexpr quint8 kStatusBit = 0x80;
constexpr quint8 kSystemFirst = 0xF0;
constexpr quint8 kSysExStart = 0xF0;
constexpr quint8 kSysExEnd = 0xF7;
constexpr quint8 kRealtimeFirst = 0xF8;
constexpr quint8 kTimeCodeQuarterFrame = 0xF1;
constexpr quint8 kSongPosition = 0xF2;
constexpr quint8 kSongSelect = 0xF3;

/// Data bytes that follow `status`.
int dataBytesOf(quint8 status)
{
    if (status < kSystemFirst)
        return MidiBytes::detail::dataBytesOf(status); // the engine's own rule for channel messages
    if (status == kTimeCodeQuarterFrame || status == kSongSelect)
        return 1;
    return status == kSongPosition ? 2 : 0;
}

} // namespace

std::vector<QByteArray> midiMessagesOf(const QByteArray& stream)
{
    std::vector<QByteArray> messages;
    QByteArray current;  // the message being gathered, status first
    quint8 running = 0;  // the channel status that data with no status of their own continue
    bool inSysEx = false;
    const auto finishSysEx = [&] {
        if (inSysEx)
            messages.push_back(current);
        inSysEx = false;
        current.clear();
    };
    for (const char c : stream) {
        const auto byte = static_cast<quint8>(c);
        if (byte >= kRealtimeFirst) {
            messages.push_back(QByteArray(1, c));
            continue;
        }
        if (inSysEx) {
            if (byte == kSysExEnd) {
                current.append(c);
                finishSysEx();
                continue;
            }
            if (!(byte & kStatusBit)) {
                current.append(c);
                continue;
            }
            finishSysEx(); // cut short by the next status byte
        }
        if (byte & kStatusBit) {
            current = QByteArray(1, c);
            inSysEx = byte == kSysExStart;
            running = byte < kSystemFirst ? byte : 0;
        } else if (current.isEmpty()) {
            if (running == 0)
                continue;
            current = QByteArray(1, char(running));
            current.append(c);
        } else {
            current.append(c);
        }
        if (!inSysEx && current.size() == 1 + dataBytesOf(quint8(current.front()))) {
            messages.push_back(current);
            current.clear();
        }
    }
    finishSysEx();
    return messages;
}

} // namespace orvan
