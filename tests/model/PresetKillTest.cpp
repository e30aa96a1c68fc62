#include "Catalogue.h"
#include "PresetPrinters.h"
#include "PresetStorage.h"
#include "SaveLoopLists.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <iostream>
#include <random>

namespace orvan::test {
namespace {

constexpr int kDefaultKills = 200;
constexpr unsigned kDefaultSeed = 15;
constexpr int kMostSavesBeforeKill = 4;
/// A random busy pause (no sleep) after the chosen save has begun, so kills land anywhere in it.
constexpr int kMostSpinSteps = 400000;
constexpr int kChildTimeoutMs = 10000;
/// A save's temporary file is the preset file's name, a dot and six letters or digits.
constexpr qsizetype kTempNameExtra = 7;

int fromEnvironment(const char* name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok ? value : fallback;
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

/// Waits (bounded) until the save loop has begun `saves` saves.
bool waitForSaves(QProcess& child, int saves)
{
    qint64 seen = 0;
    while (seen < saves) {
        if (child.bytesAvailable() == 0 && !child.waitForReadyRead(kChildTimeoutMs))
            return false;
        seen += child.read(saves - seen).size();
    }
    return true;
}

TEST(PresetKillTest, ASaveKilledAtAnyMomentLeavesOneWholeFileAndTheNextSaveCleansUp)
{
    // given: a private data folder, shared with the save loop, holding the first list
    const QString scratch = qEnvironmentVariable("ORVAN_TEST_TMP", QDir::tempPath());
    ASSERT_TRUE(QDir().mkpath(scratch));
    QTemporaryDir data(QDir(scratch).filePath(QStringLiteral("kill-XXXXXX")));
    ASSERT_TRUE(data.isValid());
    const QByteArray previousDataHome = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
    const DeviceSpec spec = Catalogue::orvan();
    const QString path = PresetStorage::url(spec);
    const QDir folder = QFileInfo(path).dir();
    const QByteArray first = PresetStorage::encode(saveLoopList(false));
    const QByteArray second = PresetStorage::encode(saveLoopList(true));
    PresetStorage::save(saveLoopList(false), spec);

    const int kills = fromEnvironment("ORVAN_KILL_COUNT", kDefaultKills);
    const unsigned seed = unsigned(fromEnvironment("ORVAN_KILL_SEED", int(kDefaultSeed)));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> savesBeforeKill(1, kMostSavesBeforeKill);
    std::uniform_int_distribution<int> spinSteps(0, kMostSpinSteps);
    int leftoversSeen = 0;
    int newFileSeen = 0;
    QElapsedTimer elapsed;
    elapsed.start();

    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", kill " + std::to_string(kill));
        // when: the loop is killed somewhere in one of its first saves
        QProcess child;
        child.start(QStringLiteral(ORVAN_SAVE_LOOP), {});
        ASSERT_TRUE(child.waitForStarted(kChildTimeoutMs));
        ASSERT_TRUE(waitForSaves(child, savesBeforeKill(random)));
        [[maybe_unused]] volatile int spinning = 0;
        for (int step = spinSteps(random); step > 0; --step)
            spinning = step;
        child.kill();
        ASSERT_TRUE(child.waitForFinished(kChildTimeoutMs));
        ASSERT_EQ(child.exitStatus(), QProcess::CrashExit);

        // then: exactly one whole preset file, old or new; anything else is a temporary file
        QStringList entries = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        ASSERT_TRUE(entries.removeOne(spec.presetFile));
        const QByteArray bytes = readAll(path);
        EXPECT_TRUE(bytes == first || bytes == second) << bytes.size() << " bytes";
        newFileSeen += bytes == second ? 1 : 0;
        leftoversSeen += entries.isEmpty() ? 0 : 1;
        for (const QString& leftover : entries)
            EXPECT_TRUE(leftover.startsWith(spec.presetFile + u'.') && leftover.size() == spec.presetFile.size() + kTempNameExtra) << leftover.toStdString();

        // when: the next save
        PresetStorage::save(saveLoopList(false), spec);
        // then: only the new file is left
        EXPECT_EQ(folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot), QStringList{spec.presetFile});
        EXPECT_EQ(readAll(path), first);
    }

    std::cout << "kills " << kills << ", seed " << seed << ", new file seen after " << newFileSeen << ", leftovers before the next save "
              << leftoversSeen << ", " << elapsed.elapsed() << " ms" << std::endl;
    qputenv("XDG_DATA_HOME", previousDataHome);
}

} // namespace
} // namespace orvan::test
