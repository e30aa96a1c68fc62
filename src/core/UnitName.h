#pragma once

#include <QString>

namespace orvan {

/// How an endpoint's display name stands for a unit.
enum class UnitNameMatch {
    none,
    /// Through PipeWire's bridge of the ALSA sequencer into its graph: the same unit as the kernel
    /// sequencer client, one hop further away.
    bridged,
    /// The unit's own name, as the kernel sequencer (or a native JACK unit) gives it.
    direct,
};

/// Whether the endpoint named `endpointName` is the unit named `unitName`.
///
/// Direct: the name itself. Bridged: a port of PipeWire's sequencer bridge ("Midi-Bridge"), with or
/// without the bridge's node name in front. In PipeWire 0.3 and the versions after it that reads
/// "<owner>:(capture_N) <port>" or "<owner>:(playback_N) <port>", the owner being the sequencer
/// client's name ("Orvan"), that name and the card number ("Orvan 1"), or the card's long name
/// ("Vendor Orvan at usb-0000:00:14-0-2- high speed"). Since the bridge speaks UMP it reads
/// "[client:port] <client><port> (capture)", the port's name without the client's name in front
/// ("[24:0] Orvan MIDI 1 (playback)"), the address left out when long names are off. PipeWire
/// replaces every character of these but letters, digits and " /_:()[]" by '-', so the unit's
/// name is compared the same way.
UnitNameMatch matchUnitName(const QString& endpointName, const QString& unitName);

} // namespace orvan
