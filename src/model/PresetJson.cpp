#include "PresetJson.h"

#include "SnapshotJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <utility>

namespace orvan::PresetJson {

namespace {

/// The one form the files use: 8-4-4-4-12 hexadecimal digits in either case, nothing around them.
std::optional<QUuid> strictUuid(const QString& text)
{
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern(QStringLiteral("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}")));
    if (!form.match(text).hasMatch())
        return std::nullopt;
    return QUuid::fromString(text);
}

std::optional<Preset> readPreset(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    const QJsonValue channels = o.value(QStringLiteral("channels"));
    const QJsonValue id = o.value(QStringLiteral("id"));
    const QJsonValue name = o.value(QStringLiteral("name"));
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
        w.key(QStringLiteral("channels"));
        SnapshotJson::write(w, p.channels);
        w.key(QStringLiteral("id"));
        w.value(p.id.toString(QUuid::WithoutBraces).toUpper());
        w.key(QStringLiteral("name"));
        w.value(p.name);
        w.closeObject();
    }
    w.closeArray();
    return w.take();
}

std::optional<Presets> decode(const QByteArray& bytes)
{
    // Bytes that do not parse give a null document, which is no array either.
    const QJsonDocument doc = QJsonDocument::fromJson(bytes);
    if (!doc.isArray())
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
