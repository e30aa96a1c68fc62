#pragma once

#include <QString>
#include <jack/jack.h>
#include <optional>
#include <vector>

namespace orvan {

/// Main thread: the MIDI ports JACK lists, as the app sees them.
namespace JackPortListing {

/// Full names ("client:port") of the MIDI ports a unit can send from (`sources`) or be sent to,
/// in JACK's order, our own clients' ports left out.
std::vector<QString> portNames(jack_client_t* client, bool sources);

/// A port's JACK_METADATA_PRETTY_NAME when set, else its short name; none for a port that went.
std::optional<QString> displayName(jack_client_t* client, const QString& fullName);

} // namespace JackPortListing

} // namespace orvan
