#pragma once

#include <QString>
#include <vector>

namespace orvan {

/// Which way an endpoint carries messages, seen from the application.
enum class MidiDirection { source, destination };

/// One port of the ALSA sequencer as the sequencer lists it.
struct AlsaPort {
    int client = 0;
    int port = 0;
    QString clientName;
    QString portName;
    unsigned capability = 0; ///< SND_SEQ_PORT_CAP_* bits
};

/// A port that can stand for a unit, with the name the engine matches against.
struct AlsaEndpoint {
    int client = 0;
    int port = 0;
    QString displayName;
    bool operator==(const AlsaEndpoint&) const = default;
};

/// Turns the sequencer's port listing into endpoints, in listing order.
///
/// A source must be readable and subscribable, a destination writable and subscribable. Ports
/// marked "no export", the system client's own ports and every client of this application
/// ("OrvanRCU-...") are never endpoints. Display name: the client's name when the client has
/// exactly one endpoint in that direction (the kernel names a class-compliant USB unit's client
/// after its product, so a one-port unit reads "Orvan"); otherwise the port's name, prefixed by
/// the client's name and a space unless it already starts with the client's name.
std::vector<AlsaEndpoint> alsaEndpoints(const std::vector<AlsaPort>& ports, MidiDirection direction);

} // namespace orvan
