#include "JackWiring.h"

#include <cerrno>

namespace orvan::JackWiring {

bool attach(JackClient& c, const QString& source)
{
    const int result = jack_connect(c.handle, source.toUtf8().constData(), jack_port_name(c.in));
    return result == 0 || result == EEXIST;
}

void retryAttach(JackClient& c)
{
    if (!c.in)
        return;
    std::erase_if(c.pendingAttach, [&](const QString& source) {
        return !jack_port_by_name(c.handle, source.toUtf8().constData()) || attach(c, source);
    });
}

bool aimOut(JackClient& c, const QString& destination)
{
    if (c.outWanted != destination && !c.outWanted.isEmpty() && c.out)
        jack_disconnect(c.handle, jack_port_name(c.out), c.outWanted.toUtf8().constData());
    c.outWanted = destination;
    return wireOut(c);
}

bool wireOut(JackClient& c)
{
    c.outWired = false;
    jack_port_t* out = c.out;
    if (c.outWanted.isEmpty() || !out)
        return false;
    const QByteArray target = c.outWanted.toUtf8();
    if (!jack_port_by_name(c.handle, target.constData()))
        return false;
    // The wiring JACK reports, not the one we remember: a unit that went and came back under the
    // same name has a new port, and JACK dropped our connection with the old one. Connecting
    // counts as a graph change even when it stands. A unit whose client is not active yet
    // refuses; the next graph change tries again.
    const int result = jack_connect(c.handle, jack_port_name(out), target.constData());
    return c.outWired = result == 0 || result == EEXIST;
}

} // namespace orvan::JackWiring
