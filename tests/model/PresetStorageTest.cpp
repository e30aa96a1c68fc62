#include "ModelRig.h"
#include "AtomicFile.h"
#include "PresetJson.h"

#include <QJsonDocument>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan::test {
namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size());
}

/// Every name in the folder of `path`, whatever its type, hidden ones included.
QStringList entriesBeside(const QString& path)
{
    return QFileInfo(path).dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

/// Works on the two-channel unit's file.
class PresetStorageTest : public ModelTest {
protected:
    const DeviceSpec spec = Catalogue::dunra();
    const QString path = PresetStorage::url(spec);
};

Preset twoChannelExample()
{
    return Preset{QUuid::fromString(QStringLiteral("5a1e0c3b-8f2d-4b6a-9c7e-1d2f3a4b5c6d")), QStringLiteral("Preset 1"),
                  {ChannelSnapshot{12, false, true, false, false, false}, ChannelSnapshot{std::nullopt, false, false, false, true, true}}};
}

TEST_F(PresetStorageTest, WritesTheTwoChannelExampleIntoTheOrvanRCUDataFolderIndentedByTwo)
{
    PresetStorage::save({twoChannelExample()}, spec);
    const QByteArray bytes = readAll(QDir(qEnvironmentVariable("XDG_DATA_HOME")).filePath(QStringLiteral("OrvanRCU/presets-dunra.json")));
    EXPECT_TRUE(bytes.startsWith("[\n  {\n    \"channels\" : [\n      {\n        \"di\" : false,\n        \"gainValue\" : 12,\n"));
    EXPECT_EQ(QJsonDocument::fromJson(bytes).toJson(QJsonDocument::Compact),
              R"([{"channels":[{"di":false,"gainValue":12,"mute":false,"pad":false,"phantom":true,"polarity":false},)"
              R"({"di":true,"mute":true,"pad":false,"phantom":false,"polarity":false}],"id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":"Preset 1"}])");
}

TEST_F(PresetStorageTest, SavingThenLoadingGivesBackAnEqualListWhateverTheNames)
{
    const QString names[] = {u"Drums \"A\"\\B"_qs, u"\nline breaks\r\n"_qs, u" \tblanks\t "_qs, u"ctl \u0001\u001f\b\f"_qs,
                             u"caf\u00e9 \u2603 \U0001F3A4 \u05e9\u05dc\u05d5\u05dd"_qs, QString(QChar(0)) + u"nul"_qs};
    Presets eight;
    for (const QString& name : names)
        eight.append(Preset{QUuid::createUuid(), name, QList<ChannelSnapshot>(8, ChannelSnapshot{24, true, true, true, true, std::nullopt})});
    eight.append(Preset{QUuid::createUuid(), QStringLiteral("No channels"), {}});
    eight.append(Preset{QUuid::createUuid(), QStringLiteral("Nothing reported"), {ChannelSnapshot{}}});
    const std::pair<DeviceSpec, Presets> cases[] = {
        {Catalogue::orvan(), eight}, {Catalogue::dunra(), {twoChannelExample()}}, {Catalogue::melko(), {}}};
    for (const auto& [unit, presets] : cases) {
        SCOPED_TRACE(unit.title.toStdString());
        PresetStorage::save(presets, unit);
        EXPECT_EQ(PresetStorage::load(unit), presets);
    }
}

TEST_F(PresetStorageTest, ReadsOnlyAWholeWellFormedListAndNeverTouchesTheFile)
{
    const QByteArray id = R"("id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D")";
    const QByteArray switches = R"("mute":false,"pad":false,"phantom":false,"polarity":false)";
    const auto file = [](const QByteArray& snapshot, const QByteArray& idAndName) { return "[{\"channels\":[{" + snapshot + "}]," + idAndName + "}]"; };
    const auto preset = [&](const QByteArray& snapshot, const QByteArray& name = R"("P")") { return file(snapshot, id + ",\"name\":" + name); };
    const auto withId = [&](const QByteArray& uuid) { return file(switches, R"("id":")" + uuid + R"(","name":"P")"); };
    const auto loaded = [](std::optional<qint64> gain, const QString& name = QStringLiteral("P")) {
        return Presets{Preset{QUuid::fromString(QLatin1String("5a1e0c3b-8f2d-4b6a-9c7e-1d2f3a4b5c6d")), name,
                              {ChannelSnapshot{gain, false, false, false, false, std::nullopt}}}};
    };
    struct Case { const char* what; std::optional<QByteArray> bytes; Presets expected = {}; }; // no bytes: no file at all
    const Case cases[] = {
        {"nulls, unknown keys, any whitespace", " [ {\"x\":1, " + id + ",\"name\":\"P\",\n\t\"channels\":[{\"di\":null,\"gainValue\":null,\"hpf\":true," + switches + "}]} ] ", loaded(std::nullopt)},
        {"lower-case id", withId("5a1e0c3b-8f2d-4b6a-9c7e-1d2f3a4b5c6d"), loaded(std::nullopt)},
        {"gain 2^53 + 1 read exactly", preset(switches + R"(,"gainValue":9007199254740993)"), loaded(9007199254740993)},
        {"surrogate pair in a name", preset(switches, R"("\ud83c\udfa4")"), loaded(std::nullopt, QStringLiteral("\U0001F3A4"))},
        {"missing", std::nullopt},
        {"truncated", PresetJson::encode({twoChannelExample()}).chopped(9)},
        {"mute is null", preset(R"("mute":null,"pad":false,"phantom":false,"polarity":false)")},
        {"di is a number", preset(switches + R"(,"di":1)")},
        {"gain is fractional", preset(switches + R"(,"gainValue":12.5)")},
        {"gain past 64 bits", preset(switches + R"(,"gainValue":9223372036854775808)")},
        {"preset lacks name", file(switches, id)},
        {"preset lacks channels", "[{" + id + ",\"name\":\"P\"}]"},
        {"lone surrogate in a name", preset(switches, R"("a\ud83c")")},
        {"braced id", withId("{5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D}")},
        {"id of the right length but not hexadecimal", withId("5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6G")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(path);
        if (c.bytes)
            writeBytes(path, *c.bytes);
        EXPECT_EQ(PresetStorage::load(spec), c.expected);
        EXPECT_EQ(readAll(path), c.bytes.value_or(QByteArray())) << "loading never rewrites a file";
    }
    EXPECT_TRUE(QFileInfo(QFileInfo(path).absolutePath()).isDir()) << "loading makes the folder";
}

TEST_F(PresetStorageTest, AFIFOIsNeverReadLikeAFileButASymlinkToAFileIsFollowed)
{
    // a FIFO with a writer that never closes it: read like a file, the start-up would wait for ever
    const QByteArray valid = PresetJson::encode({twoChannelExample()});
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const int writer = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(::write(writer, valid.constData(), size_t(valid.size())), valid.size());
    EXPECT_EQ(PresetStorage::load(spec), Presets{});
    ::close(writer);
    QTemporaryDir elsewhere;
    writeBytes(elsewhere.filePath("real.json"), valid);
    ASSERT_TRUE(QFile::remove(path) && QFile::link(elsewhere.filePath("real.json"), path));
    EXPECT_EQ(PresetStorage::load(spec), Presets{twoChannelExample()});
}

TEST_F(PresetStorageTest, ASaveRemovesWhatInterruptedSavesOfItsUnitLeftButNothingElseAndKeepsTheFileUsable)
{
    // an interrupted save, and names that are not this unit's leftovers or are held by a live save
    PresetStorage::save({twoChannelExample()}, spec);
    const QByteArray before = readAll(path);
    EXPECT_FALSE(AtomicFile::write(path, "[]", AtomicFile::Stage::stopBeforeRename));
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(entriesBeside(path).size(), 2) << "the interrupted save left its temporary file";
    const QDir folder = QFileInfo(path).dir();
    const QStringList kept{"presets.json.a8Zq3x", "presets-dunra.json.bak", "presets-dunra.json.a8Zq3xy", "presets-dunra.json.AbCdEf"};
    for (const QString& name : kept)
        writeBytes(folder.filePath(name), "leftover");
    const int held = ::open(QFile::encodeName(folder.filePath(kept.back())).constData(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX | LOCK_NB), 0);
    ASSERT_TRUE(folder.mkdir(QStringLiteral("presets-dunra.json.000000")));
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0);
    PresetStorage::save({}, spec);
    ::close(held);
    // the new file keeps the old one's mode, but never so far as to lock its owner out
    EXPECT_EQ(readAll(path), "[]");
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & ALLPERMS, 0600u);
    QStringList expected = kept + QStringList{"presets-dunra.json", "presets-dunra.json.000000"};
    expected.sort();
    EXPECT_EQ(entriesBeside(path), expected);
}

} // namespace
} // namespace orvan::test
