#include "StartupTimes.h"

#include "BenchTable.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <memory>
#include <tuple>

namespace orvan::bench {

namespace {

struct Launch {
    double ms = -1;
    long rssKb = -1;
};

/// Starts `program` with private data and settings folders and the cache folder `cache`, on the
/// X display `display` if one is named (else offscreen), with `preload` loaded into it if named;
/// returns the milliseconds from spawn to its "painted" line and its resident size once settled.
Launch launch(const QString& program, const QStringList& arguments, const QString& cache, const QString& display,
              const QString& preload = {})
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    QTemporaryDir data, settings;
    env.insert(QStringLiteral("XDG_DATA_HOME"), data.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), settings.path());
    env.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
    if (!preload.isEmpty())
        env.insert(QStringLiteral("LD_PRELOAD"), preload);
    if (!display.isEmpty()) { // a real window on an X server, as a user has
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("DISPLAY"), display);
    }
    process.setProcessEnvironment(env);
    QElapsedTimer t;
    t.start();
    process.start(program, arguments);
    Launch result;
    bool settled = false;
    while (!settled && process.waitForReadyRead(10000)) {
        while (process.canReadLine()) {
            const QByteArray line = process.readLine().trimmed();
            if (line.startsWith("painted"))
                result.ms = elapsedMs(t);
            if (line.startsWith("settled")) {
                result.rssKb = line.mid(8).toLong();
                settled = true;
            }
        }
    }
    process.waitForFinished(5000);
    if (process.state() != QProcess::NotRunning)
        process.kill();
    return result;
}

/// One build's start-ups: the build being measured, or an older one beside it.
struct StartSubject {
    QString name;
    QString probe;
    QTemporaryDir warmCache;
    std::vector<double> cold, warm;
    long coldRss = 0, warmRss = 0;
};

/// qpwgraph, a Qt 6 tool of the same desktop, is the reference a studio compares start-up with.
/// Its first frame is caught by a hook preloaded into it (bench/FirstFrameHook.cpp); it needs
/// real windows, so it is timed on X only, and only where it is installed.
struct Reference {
    QString program = QStandardPaths::findExecutable(QStringLiteral("qpwgraph"));
    QString hook = QCoreApplication::applicationDirPath() + QStringLiteral("/libfirst_frame_hook.so");
    std::vector<double> times;
    long rss = 0;
    bool usable(const QString& display) const { return !display.isEmpty() && !program.isEmpty() && QFile::exists(hook); }
};

} // namespace

void startupRows(const QStringList& probes, const QString& display)
{
    constexpr int kTrials = 9;
    const QString where = display.isEmpty() ? QStringLiteral("offscreen") : QStringLiteral("Xvfb");
    const QStringList app{QStringLiteral("--demo")};
    // A warm start finds the plates a previous start left in its cache folder; a cold one finds
    // an empty folder. Every build's starts and the empty window take turns, so a load that
    // drifts weighs on all of them alike.
    std::vector<std::unique_ptr<StartSubject>> subjects;
    for (const QString& probe : probes) {
        auto subject = std::make_unique<StartSubject>();
        subject->name = subjects.empty() ? QStringLiteral("OrvanRCU") : QStringLiteral("before");
        subject->probe = probe;
        launch(probe, app, subject->warmCache.path(), display);
        subjects.push_back(std::move(subject));
    }
    std::vector<double> empty, oneWord;
    long emptyRss = 0;
    Reference reference;
    for (int i = 0; i < kTrials; ++i) {
        for (const auto& subject : subjects) {
            QTemporaryDir coldCache;
            const Launch c = launch(subject->probe, app, coldCache.path(), display);
            const Launch w = launch(subject->probe, app, subject->warmCache.path(), display);
            subject->cold.push_back(c.ms);
            subject->warm.push_back(w.ms);
            subject->coldRss = std::max(subject->coldRss, c.rssKb);
            subject->warmRss = std::max(subject->warmRss, w.rssKb);
        }
        QTemporaryDir emptyCache;
        const Launch e = launch(probes[0], {QStringLiteral("--empty-window")}, emptyCache.path(), display);
        empty.push_back(e.ms);
        emptyRss = std::max(emptyRss, e.rssKb);
        oneWord.push_back(launch(probes[0], {QStringLiteral("--one-word-window")}, emptyCache.path(), display).ms);
        if (reference.usable(display)) {
            QTemporaryDir referenceCache;
            const Launch r = launch(reference.program, {}, referenceCache.path(), display, reference.hook);
            reference.times.push_back(r.ms);
            reference.rss = std::max(reference.rss, r.rssKb);
        }
    }
    addRow(QStringLiteral("Start-up to first frame (%1): empty Qt window, min / median").arg(where),
           QStringLiteral("%1 / %2 ms").arg(lowest(empty), 0, 'f', 0).arg(median(empty), 0, 'f', 0), QString(), true);
    // What the first text on screen costs any Qt window (setting up the fonts): a floor under
    // every start-up that shows lettering, whatever it caches.
    addRow(QStringLiteral("Start-up (%1): the same window showing one word, min / median (ratio)").arg(where),
           QStringLiteral("%1 / %2 ms (%3 x)")
               .arg(lowest(oneWord), 0, 'f', 0)
               .arg(median(oneWord), 0, 'f', 0)
               .arg(median(oneWord) / median(empty), 0, 'f', 2),
           QString(), true);
    for (const auto& subject : subjects) {
        for (const auto& [name, times, goal] : {std::tuple{QStringLiteral("cold cache"), subject->cold, 1.6},
                                                std::tuple{QStringLiteral("warm cache"), subject->warm, 1.2}}) {
            const double ratio = median(times) / median(empty);
            addRow(QStringLiteral("Start-up (%1): %2, %3, min / median (ratio)").arg(where, subject->name, name),
                   QStringLiteral("%1 / %2 ms (%3 x)").arg(lowest(times), 0, 'f', 0).arg(median(times), 0, 'f', 0).arg(ratio, 0, 'f', 2),
                   QStringLiteral("< %1 x").arg(goal), ratio < goal);
        }
    }
    if (!reference.times.empty()) {
        addRow(QStringLiteral("Start-up (%1): qpwgraph, first run, min / median (ratio)").arg(where),
               QStringLiteral("%1 / %2 ms (%3 x)")
                   .arg(lowest(reference.times), 0, 'f', 0)
                   .arg(median(reference.times), 0, 'f', 0)
                   .arg(median(reference.times) / median(empty), 0, 'f', 2),
               QString(), true);
        const double ratio = median(subjects[0]->cold) / median(reference.times);
        addRow(QStringLiteral("Start-up (%1): OrvanRCU cold cache / qpwgraph").arg(where),
               QStringLiteral("%1 x").arg(ratio, 0, 'f', 2), QStringLiteral("< 1 x"), ratio < 1);
        addRow(QStringLiteral("Memory at qpwgraph's first frame (%1)").arg(where),
               QStringLiteral("%1 MB (+%2 MB)").arg(reference.rss / 1024.0, 0, 'f', 1).arg((reference.rss - emptyRss) / 1024.0, 0, 'f', 1),
               QString(), true);
    }
    for (const auto& subject : subjects) {
        for (const auto& [name, rss] : {std::pair{QStringLiteral("cold"), subject->coldRss}, std::pair{QStringLiteral("warm"), subject->warmRss}}) {
            const double extraMb = (rss - emptyRss) / 1024.0;
            addRow(QStringLiteral("Memory after a %1 start, %2 (%3; empty window: %4 MB)").arg(name, subject->name, where).arg(emptyRss / 1024.0, 0, 'f', 1),
                   QStringLiteral("%1 MB (+%2 MB)").arg(rss / 1024.0, 0, 'f', 1).arg(extraMb, 0, 'f', 1),
                   QStringLiteral("< +15 MB"), extraMb < 15);
        }
    }
}

void iconExportRow(const QString& app)
{
    QTemporaryDir dir;
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        QProcess process;
        QElapsedTimer t;
        t.start();
        process.start(app, {QStringLiteral("--render-icon"), dir.filePath(QStringLiteral("icon.png"))});
        process.waitForFinished(10000);
        times.push_back(elapsedMs(t));
    }
    addRow(QStringLiteral("--render-icon, whole process (median of 5)"), QStringLiteral("%1 ms").arg(median(times), 0, 'f', 0),
           QStringLiteral("< 400 ms"), median(times) < 400);
}


} // namespace orvan::bench
