#include "PresetJson.h"

#include "SnapshotJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace orvan::PresetJson {

namespace {

namespace Key {
const QString channels = QStringLiteral("channels");
const QString id = QStringLiteral("id");
const QString name = QStringLiteral("name");
} // namespace Key

bool isAsciiHexDigit(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }

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

} // namespace orvan::PresetJson
