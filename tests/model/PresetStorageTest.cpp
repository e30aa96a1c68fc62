#include "Catalogue.h"
#include "PresetStorage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <functional>

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

TEST_F(PresetStorageTest, WritesTheTwoChannelLayoutByteForByte)
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
}

TEST_F(PresetStorageTest, WritesTheEightChannelLayoutByteForByteWithoutDIKeys)
{
    // given: eight channels, one gain unknown, a name that needs escaping
    QList<ChannelSnapshot> channels;
    for (int i = 0; i < 8; ++i)
        channels.append(ChannelSnapshot{i == 3 ? std::nullopt : std::optional<qint64>(6 + i), i == 1, i == 2, i == 4, i == 7, std::nullopt});
    const Presets presets{
        Preset{QUuid::fromString(QStringLiteral("00112233-4455-6677-8899-aabbccddeeff")), QStringLiteral("Drums \"A\"\\B"), channels}};
    // when
    PresetStorage::save(presets, Catalogue::orvan());
    // then
    const QByteArray expected = R"([
  {
    "channels" : [
      {
        "gainValue" : 6,
        "mute" : false,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      },
      {
        "gainValue" : 7,
        "mute" : false,
        "pad" : true,
        "phantom" : false,
        "polarity" : false
      },
      {
        "gainValue" : 8,
        "mute" : false,
        "pad" : false,
        "phantom" : true,
        "polarity" : false
      },
      {
        "mute" : false,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      },
      {
        "gainValue" : 10,
        "mute" : false,
        "pad" : false,
        "phantom" : false,
        "polarity" : true
      },
      {
        "gainValue" : 11,
        "mute" : false,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      },
      {
        "gainValue" : 12,
        "mute" : false,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      },
      {
        "gainValue" : 13,
        "mute" : true,
        "pad" : false,
        "phantom" : false,
        "polarity" : false
      }
    ],
    "id" : "00112233-4455-6677-8899-AABBCCDDEEFF",
    "name" : "Drums \"A\"\\B"
  }
])";
    EXPECT_EQ(readAll(PresetStorage::url(Catalogue::orvan())), expected);
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

TEST_F(PresetStorageTest, AnUnreadableFileLoadsEmptyAndStaysInPlace)
{
    // given: something at the file's path that cannot be read as a file
    const QString path = PresetStorage::url(Catalogue::orvan());
    ASSERT_TRUE(QDir().mkpath(path));
    // when
    const Presets loaded = PresetStorage::load(Catalogue::orvan());
    // then
    EXPECT_TRUE(loaded.isEmpty());
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(PresetStorageTest, AWriteInterruptedBeforeTheRenameLeavesTheOldFileByteForByte)
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
    EXPECT_EQ(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files), QStringList{spec.presetFile})
        << "no temporary file is left behind";
}

TEST_F(PresetStorageTest, AFailedWriteLeavesWhateverIsAtThePath)
{
    // given: a folder where the file should be, so the rename cannot replace it
    const QString path = PresetStorage::url(Catalogue::melko());
    ASSERT_TRUE(QDir().mkpath(path));
    // when
    PresetStorage::save({twoChannelExample()}, Catalogue::melko());
    // then
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_TRUE(PresetStorage::load(Catalogue::melko()).isEmpty());
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
