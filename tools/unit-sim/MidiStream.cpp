#include "MidiStream.h"

#include "midi/MidiVocabulary.h"

namespace orvan {

namespace {

using namespace Midi;

/// Data bytes that follow `status`.
int dataBytesOfAny(quint8 status)
{
    if (isChannelStatus(status))
        return dataBytesOf(status); // the engine's own rule for channel messages
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
            if (!isStatus(byte)) {
                current.append(c);
                continue;
            }
            finishSysEx(); // cut short by the next status byte
        }
        if (isStatus(byte)) {
            current = QByteArray(1, c);
            inSysEx = byte == kSysExStart;
            running = isChannelStatus(byte) ? byte : 0;
        } else if (current.isEmpty()) {
            if (running == 0)
                continue;
            current = QByteArray(1, char(running));
            current.append(c);
        } else {
            current.append(c);
        }
        if (!inSysEx && current.size() == 1 + dataBytesOfAny(quint8(current.front()))) {
            messages.push_back(current);
            current.clear();
        }
    }
    finishSysEx();
    return messages;
}

} // namespace orvan
