#include "JackPortListing.h"

#include "../OwnClientName.h"

#include <jack/metadata.h>

namespace orvan::JackPortListing {

std::vector<QString> portNames(jack_client_t* client, bool sources)
{
    std::vector<QString> list;
    // A unit's source sends to us: its port is an output; its destination is an input.
    const char** names = jack_get_ports(client, nullptr, JACK_DEFAULT_MIDI_TYPE, sources ? JackPortIsOutput : JackPortIsInput);
    if (!names)
        return list;
    for (const char** n = names; *n; ++n) {
        const QString name = QString::fromUtf8(*n);
        if (!name.startsWith(QLatin1String(kOwnClientPrefix)))
            list.push_back(name);
    }
    jack_free(names);
    return list;
}

std::optional<QString> displayName(jack_client_t* client, const QString& fullName)
{
    jack_port_t* port = jack_port_by_name(client, fullName.toUtf8().constData());
    if (!port)
        return std::nullopt;
    char* value = nullptr;
    char* type = nullptr;
    if (jack_get_property(jack_port_uuid(port), JACK_METADATA_PRETTY_NAME, &value, &type) == 0 && value) {
        const QString pretty = QString::fromUtf8(value);
        jack_free(value);
        jack_free(type);
        return pretty;
    }
    return QString::fromUtf8(jack_port_short_name(port));
}

} // namespace orvan::JackPortListing
