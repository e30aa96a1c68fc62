// orvan-unit-sim: one simulated unit on the running JACK server, or on the ALSA sequencer.
#include "AlsaUnitSimulator.h"
#include "Catalogue.h"
#include "KnobScript.h"
#include "PlayLine.h"
#include "UnitSimulator.h"
#include "midi/MainThreadSignal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <memory>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr quint32 kDefaultDetentMilliseconds = 40;
constexpr int kExitNoServer = 2;
constexpr int kExitBadArguments = 3;
constexpr std::size_t kReadChunk = 64 * 1024;
// How much of a refused line an error message quotes.
constexpr qsizetype kQuotedLine = 80;

const char kDescription[] =
    "Stands in for one OrvanRCU unit, on JACK (the default) or on the ALSA sequencer (--alsa).\n"
    "\n"
    "Prints \"ready ...\" once its ports exist, then one line per message it receives:\n"
    "\"<time stamp> <bytes in hex>\". On JACK the time stamp is the JACK frame at which the message\n"
    "arrived; on ALSA it is microseconds of the simulator's own sequencer queue, stamped by the\n"
    "kernel on arrival. Every Control Change is reported straight back, as the hardware does.\n"
    "\n"
    "Each line on standard input, \"[+MICROSECONDS] HEX HEX ...\", is a MIDI byte stream the unit\n"
    "sends (all at once, or one message every MICROSECONDS).\n"
    "\n"
    "On ALSA the unit is one client named like the unit, with one port, as a USB unit is.\n"
    "\n"
    "Ends on SIGINT or SIGTERM, or when the JACK server goes away.";

orvan::MainThreadSignal* quitSignal = nullptr;

void onTerminate(int)
{
    if (quitSignal)
        quitSignal->raise(); // one write(): safe in a signal handler
}

/// Hands every complete line of standard input to `onLine`; at its end, stops listening (a
/// simulator started in the background keeps running).
class StandardInputLines {
public:
    explicit StandardInputLines(std::function<void(const QString&)> onLine)
        : m_notifier(STDIN_FILENO, QSocketNotifier::Read)
        , m_onLine(std::move(onLine))
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
    }

private:
    void read()
    {
        char chunk[kReadChunk];
        const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (got <= 0) {
            m_notifier.setEnabled(false);
            return;
        }
        m_pending.append(chunk, got);
        for (qsizetype end; (end = m_pending.indexOf('\n')) >= 0; m_pending.remove(0, end + 1))
            m_onLine(QString::fromLatin1(m_pending.left(end)));
    }

    QSocketNotifier m_notifier;
    std::function<void(const QString&)> m_onLine;
    QByteArray m_pending;
};

/// Each line of standard input is something for the unit to play.
template <typename Simulator>
std::unique_ptr<StandardInputLines> playStandardInput(Simulator& simulator)
{
    return std::make_unique<StandardInputLines>([&simulator](const QString& line) {
        if (const auto request = orvan::parsePlayLine(line)) {
            if (!simulator.play(request->bytes, request->spacing))
                std::fprintf(stderr, "too much at once, not played: %s\n", qPrintable(line.left(kQuotedLine)));
        } else if (!line.trimmed().isEmpty()) {
            std::fprintf(stderr, "bad line: %s\n", qPrintable(line.left(kQuotedLine)));
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(kDescription));
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
    const QCommandLineOption alsaOption(QStringLiteral("alsa"), QStringLiteral("Be a unit on the ALSA sequencer."));
    parser.addOptions({unitOption, nameOption, turnOption, detentOption, alsaOption});
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
    const quint32 detent = parser.value(detentOption).toUInt();

    orvan::MainThreadSignal quit([] { QCoreApplication::quit(); });
    quitSignal = &quit;
    std::signal(SIGINT, onTerminate);
    std::signal(SIGTERM, onTerminate);

    const auto run = [&app](auto& simulator, const char* missing) {
        if (!simulator.start()) {
            std::fprintf(stderr, "%s\n", missing);
            return kExitNoServer;
        }
        const auto input = playStandardInput(simulator);
        return app.exec();
    };
    int result = 0;
    if (parser.isSet(alsaOption)) {
        orvan::AlsaUnitSimulator simulator(displayName, std::move(script), detent);
        result = run(simulator, "no ALSA sequencer");
    } else {
        orvan::UnitSimulator simulator(displayName, std::move(script), detent);
        simulator.onServerGone = [] { QCoreApplication::quit(); };
        result = run(simulator, "no JACK server");
    }
    quitSignal = nullptr;
    return result;
}
