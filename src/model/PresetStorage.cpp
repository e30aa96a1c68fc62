#include "PresetStorage.h"

#include "AtomicFile.h"
#include "DeviceSpec.h"
#include "SnapshotJson.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <utility>

namespace orvan::PresetStorage {

namespace {

namespace Key {
const QString channels = QStringLiteral("channels");
const QString id = QStringLiteral("id");
const QString name = QStringLiteral("name");
} // namespace Key

const QString kFolderName = QStringLiteral("OrvanRCU");
const QString kDefaultDataHome = QStringLiteral(".local/share");

bool isAsciiHexDigit(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }

QString dataHome()
{
    // A relative XDG_DATA_HOME is invalid and must be ignored.
    const QString xdg = qEnvironmentVariable("XDG_DATA_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(xdg))
        return xdg;
    return QDir::home().filePath(kDefaultDataHome);
}

/// The one form the files use: 8-4-4-4-12 hexadecimal digits in either case, nothing around them.
std::optional<QUuid> strictUuid(const QString& text)
{
    constexpr qsizetype kLength = 36;
    constexpr qsizetype kHyphens[] = {8, 13, 18, 23};
    if (text.size() != kLength)
        return std::nullopt;
    for (qsizetype i = 0; i < kLength; ++i) {
        const bool hyphenPlace = std::ranges::find(kHyphens, i) != std::end(kHyphens);
        const bool ok = hyphenPlace ? text[i] == u'-' : isAsciiHexDigit(text[i].unicode());
        if (!ok)
            return std::nullopt;
    }
    return QUuid::fromString(text);
}

std::optional<Preset> readPreset(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    const QJsonValue channels = o.value(Key::channels);
    const QJsonValue id = o.value(Key::id);
    const QJsonValue name = o.value(Key::name);
    if (!channels.isArray() || !id.isString() || !name.isString())
        return std::nullopt;

    const auto uuid = strictUuid(id.toString());
    // A "\ud800" escape decodes to a lone surrogate: not text, and it could not be written back.
    if (!uuid || !QStringView(name.toString()).isValidUtf16())
        return std::nullopt;

    auto snapshots = SnapshotJson::readList(channels);
    if (!snapshots)
        return std::nullopt;
    return Preset{*uuid, name.toString(), std::move(*snapshots)};
}

} // namespace

QString url(const DeviceSpec& spec)
{
    const QString folder = QDir(dataHome()).filePath(kFolderName);
    QDir().mkpath(folder); // an existing or uncreatable folder is no error here
    return QDir(folder).filePath(spec.presetFile);
}

QByteArray encode(const Presets& presets)
{
    JsonWriter w;
    w.openArray();
    for (const Preset& p : presets) {
        // A name that is not text (a lone surrogate) has no UTF-8 form: nothing is written.
        if (!QStringView(p.name).isValidUtf16())
            return {};
        w.element();
        w.openObject();
        w.key(Key::channels);
        SnapshotJson::write(w, p.channels);
        w.key(Key::id);
        w.value(p.id.toString(QUuid::WithoutBraces).toUpper());
        w.key(Key::name);
        w.value(p.name);
        w.closeObject();
    }
    w.closeArray();
    return w.take();
}

std::optional<Presets> decode(const QByteArray& bytes)
{
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray())
        return std::nullopt;
    Presets presets;
    for (const QJsonValue& v : doc.array()) {
        auto preset = readPreset(v);
        if (!preset)
            return std::nullopt;
        presets.append(std::move(*preset));
    }
    return presets;
}

void save(const Presets& presets, const DeviceSpec& spec)
{
    const QByteArray bytes = encode(presets);
    if (bytes.isEmpty())
        return;
    AtomicFile::write(url(spec), bytes);
}

Presets load(const DeviceSpec& spec)
{
    const auto bytes = AtomicFile::readRegular(url(spec), kLargestFile);
    if (!bytes)
        return {};
    return decode(*bytes).value_or(Presets{});
}

} // namespace orvan::PresetStorage
