#pragma once

#include <QtGlobal>
#include <alsa/asoundlib.h>
#include <optional>
#include <span>

/// Between ALSA sequencer events and the Universal MIDI Packet words the engine speaks.
namespace orvan::AlsaEvents {

/// A Control Change on any channel becomes the type-2 word a UMP system would deliver, so the
/// engine's input path is the same for every system. Every other event, and a controller event
/// whose number or value does not fit in 7 bits, gives none.
std::optional<quint32> toUmpWord(const snd_seq_event_t& event);

/// Whether the event is a System Announce of a client or port coming, going or changing.
bool isSetupChange(const snd_seq_event_t& event);

/// The only event types our clients take from the kernel: Control Changes and the setup changes.
/// Everything else is dropped before it reaches us, so a unit's SysEx, clock or notes never fill
/// our input pool (on overflow the kernel throws away every event waiting, Control Changes too).
std::span<const snd_seq_event_type_t> wantedTypes();

/// The controller event for a Control Change word, not yet addressed; none for any other word.
std::optional<snd_seq_event_t> fromUmpWord(quint32 word);

} // namespace orvan::AlsaEvents
