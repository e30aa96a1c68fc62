#include "StudioRig.h"

#include "midi/MidiSystem.h"

#include <alsa/asoundlib.h>

namespace orvan::test {

std::unique_ptr<SimulatedUnit> alsaUnit(const QString& name)
{
    return std::make_unique<SimulatedUnit>(QStringLiteral(ORVAN_UNIT_SIM_PATH),
                                           QStringList{QStringLiteral("--alsa"), QStringLiteral("--name"), name},
                                           [](qint64 microseconds) { return std::chrono::microseconds(microseconds); });
}

bool staysTrue(const std::function<bool()>& condition, std::chrono::milliseconds span)
{
    return condition() && !waitFor([&] { return !condition(); }, span);
}

namespace {

QString clientName(snd_seq_t* seq, int client)
{
    snd_seq_client_info_t* info = nullptr;
    snd_seq_client_info_alloca(&info);
    return snd_seq_get_any_client_info(seq, client, info) == 0 ? QString::fromUtf8(snd_seq_client_info_get_name(info))
                                                               : QString();
}

int clientNamed(snd_seq_t* seq, const QString& name)
{
    snd_seq_client_info_t* info = nullptr;
    snd_seq_client_info_alloca(&info);
    snd_seq_client_info_set_client(info, -1);
    while (snd_seq_query_next_client(seq, info) == 0) {
        if (QString::fromUtf8(snd_seq_client_info_get_name(info)) == name)
            return snd_seq_client_info_get_client(info);
    }
    return -1;
}

} // namespace

QStringList sequencerReadersOf(const QString& unitName)
{
    snd_seq_t* seq = nullptr;
    if (snd_seq_open(&seq, "default", SND_SEQ_OPEN_DUPLEX, 0) < 0)
        return {QStringLiteral("(no sequencer)")};
    QStringList readers;
    const int unit = clientNamed(seq, unitName);
    snd_seq_query_subscribe_t* query = nullptr;
    snd_seq_query_subscribe_alloca(&query);
    const snd_seq_addr_t root{quint8(unit), 0};
    snd_seq_query_subscribe_set_root(query, &root);
    snd_seq_query_subscribe_set_type(query, SND_SEQ_QUERY_SUBS_READ);
    snd_seq_query_subscribe_set_index(query, 0);
    while (unit >= 0 && snd_seq_query_port_subscribers(seq, query) == 0) {
        readers << clientName(seq, snd_seq_query_subscribe_get_addr(query)->client);
        snd_seq_query_subscribe_set_index(query, snd_seq_query_subscribe_get_index(query) + 1);
    }
    snd_seq_close(seq);
    return readers;
}

QStringList endpointNames(MidiSystem& system)
{
    QStringList names;
    system.refresh();
    for (int i = 0, n = system.sourceCount(); i < n; ++i)
        names << QStringLiteral("source: ") + system.displayName(system.source(i)).value_or(QStringLiteral("(none)"));
    for (int i = 0, n = system.destinationCount(); i < n; ++i)
        names << QStringLiteral("destination: ")
                + system.displayName(system.destination(i)).value_or(QStringLiteral("(none)"));
    return names;
}

} // namespace orvan::test
