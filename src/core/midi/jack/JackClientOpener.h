#pragma once

#include "JackClient.h"

#include <chrono>
#include <utility>
#include <vector>

namespace orvan {

class SerialWorker;

/// The calls that open and close JACK clients, which may block for seconds (a server still
/// waiting on a killed client): made on the worker thread only, never on the main thread.
namespace JackClientOpener {

/// What a round of opening came to.
struct OpenRound {
    std::vector<JackClient*> opened; ///< open and active, handles set
    bool answered = false;           ///< a server answered (it may have refused a client)
};

/// Opens the clients `closed` one after another, each with the ports it wants, its callbacks,
/// activated. Stops at the first that finds no server, and as soon as the server of any client
/// of `live` (open and handed over) or of this round went: see the .cpp.
OpenRound openInTurn(const std::vector<JackClient*>& closed, const std::vector<JackClient*>& live);

/// Closes every open client of `clients`, one after another (see the .cpp for why in turn).
void closeInTurn(const std::vector<JackClient*>& clients);

/// Main thread: has `worker` close every client of `clients` in turn, after whatever it is doing,
/// and waits at most `limit`. False when the closes did not end by then: the worker and the
/// clients are then still in use and must be left alone.
bool closeAllWithin(SerialWorker& worker, const std::vector<JackClient*>& clients, std::chrono::milliseconds limit);

/// Closes the clients of a server that went, each with JACK's notification thread of its opening
/// (0 when never heard from), once that thread has ended by itself.
void closeAfterServerGone(const std::vector<std::pair<jack_client_t*, pid_t>>& clients);

} // namespace JackClientOpener

} // namespace orvan
