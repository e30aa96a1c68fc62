#include "AlsaPortListing.h"

#include "../OwnClientName.h"

#include <alsa/asoundlib.h>
#include <algorithm>
#include <map>

namespace orvan {

namespace {

bool isUsable(const AlsaPort& p, MidiDirection direction)
{
    if (p.client == SND_SEQ_CLIENT_SYSTEM || (p.capability & SND_SEQ_PORT_CAP_NO_EXPORT))
        return false;
    if (p.clientName.startsWith(QLatin1String(kOwnClientPrefix)))
        return false;
    const unsigned needed = direction == MidiDirection::source
        ? SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ
        : SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;
    return (p.capability & needed) == needed;
}

} // namespace

std::vector<AlsaEndpoint> alsaEndpoints(const std::vector<AlsaPort>& ports, MidiDirection direction)
{
    std::map<int, int> usablePerClient;
    for (const AlsaPort& p : ports) {
        if (isUsable(p, direction))
            ++usablePerClient[p.client];
    }

    std::vector<AlsaEndpoint> endpoints;
    for (const AlsaPort& p : ports) {
        if (!isUsable(p, direction))
            continue;
        QString name;
        if (usablePerClient[p.client] == 1)
            name = p.clientName;
        else if (p.portName.startsWith(p.clientName))
            name = p.portName;
        else
            name = p.clientName + QLatin1Char(' ') + p.portName;
        endpoints.push_back({p.client, p.port, name});
    }
    return endpoints;
}

} // namespace orvan
