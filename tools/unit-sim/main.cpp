// orvan-unit-sim: one simulated unit on the running JACK server.
//
//   orvan-unit-sim --unit orvan|dunra|melko [--name NAME] [--turn CH:FROM_DB:TO_DB ...] [--detent-ms N]
//
// Prints "ready <client>" once its ports exist, then one line per received message:
// "<JACK frame> <bytes in hex>". Ends on SIGINT or SIGTERM, or when the server goes away.
#include "Catalogue.h"
#include "KnobScript.h"
#include "UnitSimulator.h"
#include "midi/MainThreadSignal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <csignal>
#include <cstdio>

namespace {

constexpr quint32 kDefaultDetentMilliseconds = 40;
constexpr int kExitNoServer = 2;
constexpr int kExitBadArguments = 3;

orvan::MainThreadSignal* quitSignal = nullptr;

void onTerminate(int)
{
    if (quitSignal)
        quitSignal->raise(); // one write(): safe in a signal handler
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Stands in for one OrvanRCU unit on JACK."));
    parser.addHelpOption();
    const QCommandLineOption unitOption(QStringLiteral("unit"), QStringLiteral("orvan, dunra or melko."),
                                        QStringLiteral("unit"), QStringLiteral("orvan"));
    const QCommandLineOption nameOption(QStringLiteral("name"), QStringLiteral("Display name instead of the unit's."),
                                        QStringLiteral("name"));
    const QCommandLineOption turnOption(QStringLiteral("turn"),
                                        QStringLiteral("Knob turn CHANNEL:FROM_DB:TO_DB played once the app attaches."),
                                        QStringLiteral("turn"));
    const QCommandLineOption detentOption(QStringLiteral("detent-ms"), QStringLiteral("Time between detents."),
                                          QStringLiteral("ms"), QString::number(kDefaultDetentMilliseconds));
    parser.addOptions({unitOption, nameOption, turnOption, detentOption});
    parser.process(app);

    QString displayName;
    for (const auto& spec : orvan::Catalogue::all()) {
        if (spec.title.compare(parser.value(unitOption), Qt::CaseInsensitive) == 0)
            displayName = spec.portName;
    }
    if (parser.isSet(nameOption))
        displayName = parser.value(nameOption);
    std::vector<orvan::MidiBytes::Message> script;
    for (const QString& text : parser.values(turnOption)) {
        const auto turn = orvan::parseKnobTurn(text);
        if (!turn) {
            std::fprintf(stderr, "bad --turn: %s\n", qPrintable(text));
            return kExitBadArguments;
        }
        const auto reports = orvan::knobReports(*turn);
        script.insert(script.end(), reports.begin(), reports.end());
    }
    if (displayName.isEmpty()) {
        std::fprintf(stderr, "unknown unit: %s\n", qPrintable(parser.value(unitOption)));
        return kExitBadArguments;
    }

    orvan::MainThreadSignal quit([] { QCoreApplication::quit(); });
    quitSignal = &quit;
    std::signal(SIGINT, onTerminate);
    std::signal(SIGTERM, onTerminate);

    orvan::UnitSimulator simulator(displayName, std::move(script), parser.value(detentOption).toUInt());
    simulator.onServerGone = [] { QCoreApplication::quit(); };
    if (!simulator.start()) {
        std::fprintf(stderr, "no JACK server\n");
        return kExitNoServer;
    }
    const int result = app.exec();
    quitSignal = nullptr;
    return result;
}
