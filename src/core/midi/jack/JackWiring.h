#pragma once

#include "JackClient.h"

namespace orvan {

/// Main thread: the JACK connections of one handed-over client. None of these waits for JACK's
/// next cycle: JACK's questions about connections sleep a whole cycle whenever a graph change is
/// pending, which the main loop must not do in the middle of a flood of reports; connecting is
/// answered at once, EEXIST when the connection stands.
namespace JackWiring {

/// Connects `source` to our "In"; false when JACK refuses (its client not yet active).
bool attach(JackClient& client, const QString& source);
/// Attaches the sources JACK refused before; those that went are given up.
void retryAttach(JackClient& client);
/// Wires our "Out" to `destination` alone (only one at a time); whether it is wired.
bool aimOut(JackClient& client, const QString& destination);
/// Wires our "Out" to the destination aimed at, if not already; whether it is wired.
bool wireOut(JackClient& client);

} // namespace JackWiring

} // namespace orvan
