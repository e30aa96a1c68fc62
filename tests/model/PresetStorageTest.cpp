#include "Catalogue.h"
#include "PresetPrinters.h"
#include "PresetStorage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <functional>
#include <linux/capability.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <limits>

namespace orvan {
namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

/// Every name in the folder of `path`, whatever its type, hidden ones included.
QStringList entriesBeside(const QString& path)
{
    return QFileInfo(path).dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

/// Root reads and writes any file whatever its mode; while this lives, the process acts as an
/// ordinary user towards file modes: the calling thread gives up root's override, and the real user
/// (whom permission checks such as access() ask about) is not root.
class ObeyingFileModes {
public:
    ObeyingFileModes()
    {
        constexpr uid_t kNobody = 65534;
        if (::getuid() == 0) {
            m_realUserChanged = ::setreuid(kNobody, 0) == 0;
            EXPECT_TRUE(m_realUserChanged);
        }
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct reduced[2];
        std::memcpy(reduced, m_saved, sizeof reduced);
        constexpr __u32 kOverrides = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH) | (1u << CAP_FOWNER);
        reduced[0].effective &= ~kOverrides;
        m_reduced = ::syscall(SYS_capset, &m_header, reduced) == 0;
        EXPECT_TRUE(m_reduced);
    }
    ~ObeyingFileModes()
    {
        if (m_reduced) {
            EXPECT_EQ(::syscall(SYS_capset, &m_header, m_saved), 0);
        }
        if (m_realUserChanged) {
            EXPECT_EQ(::setreuid(0, 0), 0);
        }
    }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
    bool m_reduced = false;
    bool m_realUserChanged = false;
};

class PresetStorageTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Each test starts without any preset files.
        for (const DeviceSpec& spec : Catalogue::all()) {
            const QString path = PresetStorage::url(spec);
            QFile::remove(path);
            QDir(path).removeRecursively();
        }
    }
};

Preset twoChannelExample()
{
    return Preset{QUuid::fromString(QStringLiteral("5a1e0c3b-8f2d-4b6a-9c7e-1d2f3a4b5c6d")), QStringLiteral("Preset 1"),
                  {ChannelSnapshot{12, false, true, false, false, false},
                   ChannelSnapshot{std::nullopt, false, false, false, true, true}}};
}

TEST_F(PresetStorageTest, WritesTheTwoChannelExampleByteForByte)
{
    // given
    const Presets presets{twoChannelExample()};
    // when
    PresetStorage::save(presets, Catalogue::dunra());
    // then
    const QByteArray expected = R"([
  {
    "channels" : [
      {
        "di" : false,
        "gainValue" : 12,
        "mute" : false,
        "pad" : false,
        "phantom" : true,
        "polarity" : false
      },
      {
        "di" : true,
        "mute" : true,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      }
    ],
    "id" : "5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D",
    "name" : "Preset 1"
  }
])";
    EXPECT_EQ(readAll(PresetStorage::url(Catalogue::dunra())), expected);
    EXPECT_EQ(PresetStorage::encode({}), "[]");
}

TEST_F(PresetStorageTest, WritesEveryNameAsItsExactTextAndReadsItBackUnchanged)
{
    // A snapshot without DI and without a gain writes neither key.
    const QByteArray layout = R"([
  {
    "channels" : [
      {
        "mute" : true,
        "pad" : false,
        "phantom" : false,
        "polarity" : true
      }
    ],
    "id" : "00112233-4455-6677-8899-AABBCCDDEEFF",
    "name" : NAME
  }
])";
    struct Case {
        QString name;
        QByteArray written;
    };
    const Case cases[] = {
        {QStringLiteral("Drums \"A\"\\B"), R"("Drums \"A\"\\B")"},
        {QStringLiteral("\nline breaks at both ends\r\n"), R"("\nline breaks at both ends\r\n")"},
        {QStringLiteral(" \tblanks at both ends\t "), "\" \\tblanks at both ends\\t \""},
        {QStringLiteral("ctl \u0001\u001f\b\f"), R"("ctl \u0001\u001f\b\f")"},
        {QStringLiteral("caf\u00e9 \u2603 \U0001F3A4 \u05e9\u05dc\u05d5\u05dd"), "\"caf\xc3\xa9 \xe2\x98\x83 \xf0\x9f\x8e\xa4 \xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d\""},
        {QString(QChar(0)) + QStringLiteral("nul"), R"("\u0000nul")"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.written.toStdString());
        // given
        const Preset preset{QUuid::fromString(QStringLiteral("00112233-4455-6677-8899-aabbccddeeff")), c.name,
                            {ChannelSnapshot{std::nullopt, false, false, true, true, std::nullopt}}};
        // when
        PresetStorage::save({preset}, Catalogue::orvan());
        // then
        EXPECT_EQ(readAll(PresetStorage::url(Catalogue::orvan())), QByteArray(layout).replace("NAME", c.written));
        EXPECT_EQ(PresetStorage::load(Catalogue::orvan()), Presets{preset});
    }
}

TEST_F(PresetStorageTest, SavingThenLoadingGivesBackAnEqualList)
{
    struct Case {
        DeviceSpec spec;
        Presets presets;
    };
    const Preset eight{QUuid::createUuid(), QStringLiteral("Vocals \u00e9\u2603 / tab\there \u0001 \"q\" \\ \n"),
                       QList<ChannelSnapshot>(8, ChannelSnapshot{24, true, true, true, true, std::nullopt})};
    const Preset empty{QUuid::createUuid(), QStringLiteral("No channels"), {}};
    const Case cases[] = {
        {Catalogue::orvan(), {eight, empty, Preset{QUuid::createUuid(), QStringLiteral("Second"), {ChannelSnapshot{}}}}},
        {Catalogue::dunra(), {twoChannelExample()}},
        {Catalogue::melko(), {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        // when
        PresetStorage::save(c.presets, c.spec);
        // then
        EXPECT_EQ(PresetStorage::load(c.spec), c.presets);
    }
}

TEST_F(PresetStorageTest, ReadsNullAsAbsentIgnoresUnknownKeysAndAcceptsAnyWhitespace)
{
    // given
    writeBytes(PresetStorage::url(Catalogue::dunra()),
               R"([{"extra":1,"name":"X","id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","channels":[
                   {"di":null,"gainValue":null,"mute":true,"pad":false,"phantom":false,"polarity":true,"hpf":true}]}])");
    // when
    const Presets loaded = PresetStorage::load(Catalogue::dunra());
    // then
    ASSERT_EQ(loaded.size(), 1);
    EXPECT_EQ(loaded[0].name, QStringLiteral("X"));
    EXPECT_EQ(loaded[0].channels, (QList<ChannelSnapshot>{ChannelSnapshot{std::nullopt, false, false, true, true, std::nullopt}}));
}

TEST_F(PresetStorageTest, ReadsOnlyExactIdsWholeGainsThatFitAndValidNames)
{
    const QByteArray id = "5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D";
    const char* exampleId = "5a1e0c3b-8f2d-4b6a-9c7e-1d2f3a4b5c6d";
    const auto file = [](const QByteArray& id, const QByteArray& gain, const QByteArray& name) {
        return R"([{"channels":[{"gainValue":)" + gain + R"(,"mute":false,"pad":false,"phantom":false,"polarity":false}],"id":")" + id
            + R"(","name":)" + name + "}]";
    };
    struct Case {
        const char* what;
        QByteArray bytes;
        std::optional<Preset> expected; // absent: the whole list is empty
    };
    const auto preset = [](const char* uuid, qint64 gain, const QString& name) {
        return Preset{QUuid::fromString(QLatin1String(uuid)), name, {ChannelSnapshot{gain, false, false, false, false, std::nullopt}}};
    };
    const Case cases[] = {
        {"upper-case id", file(id, "12", R"("P")"), preset(exampleId, 12, QStringLiteral("P"))},
        {"lower-case id", file(id.toLower(), "12", R"("P")"), preset(exampleId, 12, QStringLiteral("P"))},
        {"nil id", file("00000000-0000-0000-0000-000000000000", "12", R"("P")"), preset("00000000-0000-0000-0000-000000000000", 12, QStringLiteral("P"))},
        {"id with trailing letters", file(id + "xyz", "12", R"("P")"), std::nullopt},
        {"id with a trailing blank", file(id + " ", "12", R"("P")"), std::nullopt},
        {"id with a leading blank", file(" " + id, "12", R"("P")"), std::nullopt},
        {"braced id", file("{" + id + "}", "12", R"("P")"), std::nullopt},
        {"id with an opening brace", file("{" + id, "12", R"("P")"), std::nullopt},
        {"id with a closing brace", file(id + "}", "12", R"("P")"), std::nullopt},
        {"braced nil id", file("{00000000-0000-0000-0000-000000000000}", "12", R"("P")"), std::nullopt},
        {"id without hyphens", file(QByteArray(id).replace("-", ""), "12", R"("P")"), std::nullopt},
        {"id with a moved hyphen", file("5A1E0C3-B8F2D-4B6A-9C7E-1D2F3A4B5C6D", "12", R"("P")"), std::nullopt},
        {"id with a non-hex digit", file("5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6G", "12", R"("P")"), std::nullopt},
        {"gain 2^53 + 1", file(id, "9007199254740993", R"("P")"), preset(exampleId, 9007199254740993, QStringLiteral("P"))},
        {"largest 64-bit gain", file(id, "9223372036854775807", R"("P")"), preset(exampleId, std::numeric_limits<qint64>::max(), QStringLiteral("P"))},
        {"smallest 64-bit gain", file(id, "-9223372036854775808", R"("P")"), preset(exampleId, std::numeric_limits<qint64>::min(), QStringLiteral("P"))},
        {"gain past 64 bits", file(id, "9223372036854775808", R"("P")"), std::nullopt},
        {"gain far below 64 bits", file(id, "-1e19", R"("P")"), std::nullopt},
        {"gain true", file(id, "true", R"("P")"), std::nullopt},
        {"surrogate pair in a name", file(id, "12", R"("\ud83c\udfa4")"), preset(exampleId, 12, QStringLiteral("\U0001F3A4"))},
        {"lone high surrogate in a name", file(id, "12", R"("a\ud83c")"), std::nullopt},
        {"lone low surrogate in a name", file(id, "12", R"("\udfa4b")"), std::nullopt},
        {"reversed surrogate pair in a name", file(id, "12", R"("\udfa4\ud83c")"), std::nullopt},
        {"UTF-8 of a surrogate in a name", file(id, "12", "\"\xed\xa0\xbc\""), std::nullopt},
        {"invalid UTF-8 in a name", file(id, "12", "\"\xff\""), std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // when
        const auto decoded = PresetStorage::decode(c.bytes);
        // then
        if (c.expected) {
            EXPECT_EQ(decoded, Presets{*c.expected});
        } else {
            EXPECT_EQ(decoded, std::nullopt);
        }
    }
}

TEST_F(PresetStorageTest, EveryKindOfBadFileLoadsEmptyAndIsLeftUntouched)
{
    const QByteArray valid = PresetStorage::encode({twoChannelExample()});
    const QByteArray snapshot = R"({"mute":false,"pad":false,"phantom":false,"polarity":false)";
    const auto preset = [&](const QByteArray& channel, const QByteArray& extra = R"("id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":"P")") {
        return "[{\"channels\":[" + channel + "]," + extra + "}]";
    };
    struct Case {
        const char* name;
        std::optional<QByteArray> bytes; // absent: no file at all
    };
    const Case cases[] = {
        {"missing", std::nullopt},
        {"empty", ""},
        {"malformed", "[{\"channels\" : [}"},
        {"truncated", valid.left(valid.size() / 2)},
        {"top level is an object", "{\"channels\":[]}"},
        {"top level is a number", "42"},
        {"preset is not an object", "[1]"},
        {"snapshot is not an object", preset("true")},
        {"snapshot lacks mute", preset(R"({"pad":false,"phantom":false,"polarity":false})")},
        {"snapshot lacks phantom", preset(R"({"mute":false,"pad":false,"polarity":false})")},
        {"preset lacks id", preset(snapshot + "}", R"("name":"P")")},
        {"preset lacks name", preset(snapshot + "}", R"("id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D")")},
        {"preset lacks channels", R"([{"id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":"P"}])"},
        {"gain is a string", preset(snapshot + R"(,"gainValue":"12"})")},
        {"gain is fractional", preset(snapshot + R"(,"gainValue":12.5})")},
        {"di is a number", preset(snapshot + R"(,"di":1})")},
        {"phantom is a number", preset(R"({"mute":false,"pad":false,"phantom":1,"polarity":false})")},
        {"mute is null", preset(R"({"mute":null,"pad":false,"phantom":false,"polarity":false})")},
        {"pad is null", preset(R"({"mute":false,"pad":null,"phantom":false,"polarity":false})")},
        {"phantom is null", preset(R"({"mute":false,"pad":false,"phantom":null,"polarity":false})")},
        {"polarity is null", preset(R"({"mute":false,"pad":false,"phantom":false,"polarity":null})")},
        {"name is null", preset(snapshot + "}", R"("id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":null)")},
        {"id is null", preset(snapshot + "}", R"("id":null,"name":"P")")},
        {"name is a number", preset(snapshot + "}", R"("id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":5)")},
        {"id is not a UUID", preset(snapshot + "}", R"("id":"not-a-uuid","name":"P")")},
        {"channels is an object", R"([{"channels":{},"id":"5A1E0C3B-8F2D-4B6A-9C7E-1D2F3A4B5C6D","name":"P"}])"},
    };
    const QString path = PresetStorage::url(Catalogue::dunra());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        QFile::remove(path);
        if (c.bytes)
            writeBytes(path, *c.bytes);
        // when
        const Presets loaded = PresetStorage::load(Catalogue::dunra());
        // then
        EXPECT_TRUE(loaded.isEmpty());
        EXPECT_EQ(QFile::exists(path), c.bytes.has_value());
        if (c.bytes) {
            EXPECT_EQ(readAll(path), *c.bytes);
        }
    }
    EXPECT_TRUE(QFileInfo(QFileInfo(path).absolutePath()).isDir()) << "loading makes the folder";
}

TEST_F(PresetStorageTest, OnlyARegularFileWithinTheSizeBoundIsReadAndNothingBlocks)
{
    const QByteArray valid = PresetStorage::encode({twoChannelExample()});
    const auto padded = [&](qint64 size) { return valid + QByteArray(size - valid.size(), ' '); };
    struct Case {
        const char* what;
        std::function<void(const QString& path)> make;
        bool loads; // false: the list is empty
        bool isRegularAfterwards;
    };
    QTemporaryDir elsewhere;
    ASSERT_TRUE(elsewhere.isValid());
    int fifoWriter = -1;
    const Case cases[] = {
        {"regular file", [&](const QString& path) { writeBytes(path, valid); }, true, true},
        {"symlink to a regular file",
         [&](const QString& path) {
             writeBytes(elsewhere.filePath("real.json"), valid);
             ASSERT_TRUE(QFile::link(elsewhere.filePath("real.json"), path));
         },
         true, false},
        {"file of exactly the bound", [&](const QString& path) { writeBytes(path, padded(PresetStorage::kLargestFile)); }, true, true},
        {"file one byte past the bound", [&](const QString& path) { writeBytes(path, padded(PresetStorage::kLargestFile + 1)); }, false, true},
        {"folder", [](const QString& path) { ASSERT_TRUE(QDir().mkpath(path)); }, false, false},
        {"FIFO with a writer that never closes it",
         [&](const QString& path) {
             // A reader that opened and read it like a file would wait here for ever.
             ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
             fifoWriter = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
             ASSERT_GE(fifoWriter, 0);
             ASSERT_EQ(::write(fifoWriter, valid.constData(), size_t(valid.size())), valid.size());
         },
         false, false},
        {"symlink to an endless device", [](const QString& path) { ASSERT_TRUE(QFile::link(QStringLiteral("/dev/zero"), path)); }, false, false},
        {"socket",
         [](const QString& path) {
             const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
             sockaddr_un address{};
             address.sun_family = AF_UNIX;
             const QByteArray name = QFile::encodeName(path);
             ASSERT_LT(size_t(name.size()), sizeof address.sun_path);
             std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
             ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
             ::close(fd);
         },
         false, false},
    };
    const QString path = PresetStorage::url(Catalogue::dunra());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // given
        QFile::remove(path);
        QDir(path).removeRecursively();
        c.make(path);
        // when
        const Presets loaded = PresetStorage::load(Catalogue::dunra());
        // then
        EXPECT_EQ(loaded, c.loads ? Presets{twoChannelExample()} : Presets{});
        EXPECT_EQ(QFileInfo(path).isFile() && !QFileInfo(path).isSymLink(), c.isRegularAfterwards) << "loading changes nothing";
        if (fifoWriter >= 0)
            ::close(std::exchange(fifoWriter, -1));
        QFile::remove(path);
        QDir(path).removeRecursively();
    }
}

TEST_F(PresetStorageTest, SavingReplacesWhateverFileIsThereAndLeavesItReadableByItsOwner)
{
    const mode_t umask = ::umask(0);
    ::umask(umask);
    QTemporaryDir elsewhere;
    ASSERT_TRUE(elsewhere.isValid());
    struct Case {
        const char* what;
        std::function<void(const QString& path)> make;
        mode_t mode; // of the new file
    };
    const auto oldFileOfMode = [](mode_t mode) {
        return [mode](const QString& path) {
            writeBytes(path, PresetStorage::encode({twoChannelExample()}));
            ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
        };
    };
    const Case cases[] = {
        {"no old file", [](const QString&) {}, 0666 & ~umask},
        {"unreadable and unwritable old file", oldFileOfMode(0000), 0600},
        {"read-only old file", oldFileOfMode(0444), 0644},
        {"old file private to its group", oldFileOfMode(0640), 0640},
        {"symlink to a file elsewhere",
         [&](const QString& path) {
             writeBytes(elsewhere.filePath("other"), "untouched");
             ASSERT_TRUE(QFile::link(elsewhere.filePath("other"), path));
         },
         0666 & ~umask},
    };
    const Presets next{Preset{QUuid::createUuid(), QStringLiteral("Next"), {ChannelSnapshot{7, true, false, false, false, true}}}};
    const QString path = PresetStorage::url(Catalogue::dunra());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // given
        QFile::remove(path);
        c.make(path);
        const ObeyingFileModes obeying;
        // when
        PresetStorage::save(next, Catalogue::dunra());
        // then
        struct stat st {};
        ASSERT_EQ(::lstat(QFile::encodeName(path).constData(), &st), 0);
        EXPECT_TRUE(S_ISREG(st.st_mode));
        EXPECT_EQ(st.st_mode & ALLPERMS, c.mode);
        EXPECT_EQ(PresetStorage::load(Catalogue::dunra()), next);
    }
    EXPECT_EQ(readAll(elsewhere.filePath("other")), "untouched") << "a symlink at the path is replaced, never followed";
}

TEST_F(PresetStorageTest, AnInterruptedSaveLeavesTheOldFileWholeAndTheNextSaveRemovesWhatItLeft)
{
    // given
    const DeviceSpec spec = Catalogue::dunra();
    PresetStorage::save({twoChannelExample()}, spec);
    const QString path = PresetStorage::url(spec);
    const QByteArray before = readAll(path);
    // when
    const bool written = PresetStorage::writeAtomically(path, PresetStorage::encode({}), PresetStorage::WriteStage::stopBeforeRename);
    // then
    EXPECT_FALSE(written);
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(entriesBeside(path).size(), 2) << "the interrupted save left its temporary file";
    // when
    PresetStorage::save({}, spec);
    // then
    EXPECT_EQ(entriesBeside(path), QStringList{spec.presetFile});
    EXPECT_EQ(readAll(path), "[]");
}

TEST_F(PresetStorageTest, ASaveRemovesOnlyItsOwnUnitsLeftoversThatNoLiveSaveHolds)
{
    struct Case {
        const char* name;
        std::function<void(const QString& path)> make;
        bool removed;
    };
    int heldFd = -1;
    QTemporaryDir elsewhere;
    ASSERT_TRUE(elsewhere.isValid());
    const auto file = [](const QString& path) { writeBytes(path, "leftover"); };
    const Case cases[] = {
        {"presets-dunra.json.a8Zq3x", file, true},
        {"presets-dunra.json.AbCdEf", file, true},
        {"presets-dunra.json.000000", file, true},
        {"presets-dunra.json.a8Zq3x",
         [&](const QString& path) {
             // a save still running in another instance holds its temporary file locked
             file(path);
             heldFd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
             ASSERT_EQ(::flock(heldFd, LOCK_EX | LOCK_NB), 0);
         },
         false},
        {"presets.json.a8Zq3x", file, false},
        {"presets-dunra.json.bak", file, false},
        {"presets-dunra.json.a8Zq3", file, false},
        {"presets-dunra.json.a8Zq3xy", file, false},
        {"presets-dunra.json.a8-q3x", file, false},
        {"presets-dunra.jsonXa8Zq3x", file, false},
        {"xpresets-dunra.json.a8Zq3x", file, false},
        {"presets-dunra.json.a8Zq3x", [](const QString& path) { ASSERT_TRUE(QDir().mkpath(path)); }, false},
        {"presets-dunra.json.a8Zq3x",
         [&](const QString& path) {
             writeBytes(elsewhere.filePath("target"), "leftover");
             ASSERT_TRUE(QFile::link(elsewhere.filePath("target"), path));
         },
         false},
    };
    const DeviceSpec spec = Catalogue::dunra();
    const QString path = PresetStorage::url(spec);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        const QString other = QFileInfo(path).dir().filePath(QLatin1String(c.name));
        c.make(other);
        // when
        PresetStorage::save({twoChannelExample()}, spec);
        // then
        EXPECT_EQ(entriesBeside(path).contains(QLatin1String(c.name)), !c.removed);
        EXPECT_EQ(PresetStorage::load(spec), Presets{twoChannelExample()});
        if (heldFd >= 0)
            ::close(std::exchange(heldFd, -1));
        QFile::remove(other);
        QDir(other).removeRecursively();
    }
}

TEST_F(PresetStorageTest, AFailedSaveLeavesWhateverIsAtThePathAndNoTemporaryFile)
{
    struct Case {
        const char* what;
        std::function<void(const QString& path)> make;
        Presets presets;
    };
    const Case cases[] = {
        {"a folder at the path", [](const QString& path) { ASSERT_TRUE(QDir().mkpath(path)); }, {twoChannelExample()}},
        {"a name that is not text", [](const QString& path) { writeBytes(path, "[]"); },
         {Preset{QUuid::createUuid(), QStringLiteral("lone ") + QChar(0xd83c), {}}}},
    };
    const QString path = PresetStorage::url(Catalogue::melko());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // given
        c.make(path);
        const QByteArray before = readAll(path);
        // when
        PresetStorage::save(c.presets, Catalogue::melko());
        // then
        EXPECT_EQ(readAll(path), before);
        EXPECT_EQ(entriesBeside(path), QStringList{Catalogue::melko().presetFile});
        EXPECT_TRUE(PresetStorage::load(Catalogue::melko()).isEmpty());
        QFile::remove(path);
        QDir(path).removeRecursively();
    }
}

TEST_F(PresetStorageTest, TheFileLivesInTheOrvanRCUFolderUnderTheDataHome)
{
    struct Case {
        DeviceSpec spec;
        const char* file;
    };
    const Case cases[] = {{Catalogue::orvan(), "presets.json"}, {Catalogue::dunra(), "presets-dunra.json"}, {Catalogue::melko(), "presets-melko.json"}};
    for (const Case& c : cases) {
        EXPECT_EQ(PresetStorage::url(c.spec), QDir(qEnvironmentVariable("XDG_DATA_HOME")).filePath(QStringLiteral("OrvanRCU/") + c.file));
    }
}

} // namespace
} // namespace orvan
