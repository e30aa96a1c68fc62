#pragma once

#include <QByteArray>
#include <vector>

namespace orvan {

/// Cuts a MIDI byte stream into the messages a sequencer would deliver one by one: running status
/// written out in full, each realtime byte a message of its own (ahead of the message it sat
/// inside), a SysEx whole (or as far as it got before the next status byte), system common with
/// its data. Data bytes with no status to belong to are dropped.
std::vector<QByteArray> midiMessagesOf(const QByteArray& stream);

} // namespace orvan
