#include "ModelRig.h"
#include "PresetJson.h"

#include <QProcess>
#include <QTemporaryDir>

#include <random>

namespace orvan::test {
namespace {

constexpr int kKills = 200;
constexpr unsigned kSeed = 15;
constexpr int kMostSavesBeforeKill = 4;
/// A random busy pause (no sleep) after the chosen save has begun, so kills land anywhere in it.
constexpr int kMostSpinSteps = 400000;
constexpr int kChildTimeoutMs = 10000;

/// Waits (bounded) until the save loop has begun `saves` saves.
bool waitForSaves(QProcess& child, int saves)
{
    for (qint64 seen = 0; seen < saves; seen += child.read(saves - seen).size()) {
        if (child.bytesAvailable() == 0 && !child.waitForReadyRead(kChildTimeoutMs))
            return false;
    }
    return true;
}

TEST(PresetKillTest, ASaveKilledAtAnyMomentLeavesOneWholeFileAndTheNextSaveCleansUp)
{
    // a private data folder, shared with the save loop (which inherits the environment)
    QTemporaryDir data(QDir(qEnvironmentVariable("ORVAN_TEST_TMP", QDir::tempPath())).filePath(QStringLiteral("kill-XXXXXX")));
    ASSERT_TRUE(data.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
    const QString path = PresetStorage::url(Catalogue::orvan());
    const QDir folder = QFileInfo(path).dir();
    const auto entries = [&] { return folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot); };
    PresetStorage::save({}, Catalogue::orvan());
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int> savesBeforeKill(1, kMostSavesBeforeKill), spinSteps(0, kMostSpinSteps);
    for (int kill = 0; kill < kKills; ++kill) {
        SCOPED_TRACE(kill);
        QProcess child; // killed somewhere in one of its first saves
        child.start(QStringLiteral(ORVAN_SAVE_LOOP), {});
        ASSERT_TRUE(child.waitForStarted(kChildTimeoutMs));
        ASSERT_TRUE(waitForSaves(child, savesBeforeKill(random)));
        [[maybe_unused]] volatile int spinning = 0;
        for (int step = spinSteps(random); step > 0; --step)
            spinning = step;
        child.kill();
        ASSERT_TRUE(child.waitForFinished(kChildTimeoutMs));
        // one whole list, the old or a new one; anything else beside it is a temporary file
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto list = PresetJson::decode(file.readAll());
        ASSERT_TRUE(list) << "a torn file";
        EXPECT_TRUE(list->size() == 0 || list->size() == 3 || list->size() == 40) << list->size() << " presets";
        for (const QString& name : entries())
            EXPECT_TRUE(name == QLatin1String("presets.json") || name.startsWith(QLatin1String("presets.json."))) << name.toStdString();
        PresetStorage::save({}, Catalogue::orvan());
        EXPECT_EQ(entries(), QStringList{QStringLiteral("presets.json")}) << "the next save leaves only its file";
    }
}

} // namespace
} // namespace orvan::test
