#include "SnapshotJson.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QVariant>

namespace orvan::SnapshotJson {

namespace {

namespace Key {
const QString di = QStringLiteral("di");
const QString gainValue = QStringLiteral("gainValue");
const QString mute = QStringLiteral("mute");
const QString pad = QStringLiteral("pad");
const QString phantom = QStringLiteral("phantom");
const QString polarity = QStringLiteral("polarity");
} // namespace Key

std::optional<bool> requiredBool(const QJsonObject& o, const QString& key)
{
    const QJsonValue v = o.value(key);
    if (!v.isBool())
        return std::nullopt; // also null: only the optional keys may be null
    return v.toBool();
}

/// Missing or null reads as absent; any other type than the expected one fails the whole file.
template <typename T>
struct Optional {
    bool ok = true;
    std::optional<T> value;
};

Optional<bool> optionalBool(const QJsonObject& o, const QString& key)
{
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return {};
    if (!v.isBool())
        return {false, std::nullopt};
    return {true, v.toBool()};
}

Optional<qint64> optionalInteger(const QJsonObject& o, const QString& key)
{
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return {};
    // The parser keeps every integral number that fits 64 bits as an exact integer and anything
    // else (a fraction, or a number too large) as a double, which is not a gain.
    const QVariant number = v.toVariant();
    if (number.typeId() != QMetaType::LongLong)
        return {false, std::nullopt};
    return {true, number.toLongLong()};
}

} // namespace

void write(JsonWriter& w, const ChannelSnapshot& s)
{
    // Members in sorted key order; absent optional values leave their key out.
    w.openObject();
    if (s.di) {
        w.key(Key::di);
        w.value(*s.di);
    }
    if (s.gainValue) {
        w.key(Key::gainValue);
        w.value(*s.gainValue);
    }
    w.key(Key::mute);
    w.value(s.mute);
    w.key(Key::pad);
    w.value(s.pad);
    w.key(Key::phantom);
    w.value(s.phantom);
    w.key(Key::polarity);
    w.value(s.polarity);
    w.closeObject();
}

void write(JsonWriter& w, const QList<ChannelSnapshot>& channels)
{
    w.openArray();
    for (const ChannelSnapshot& s : channels) {
        w.element();
        write(w, s);
    }
    w.closeArray();
}

std::optional<ChannelSnapshot> read(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    const auto mute = requiredBool(o, Key::mute);
    const auto pad = requiredBool(o, Key::pad);
    const auto phantom = requiredBool(o, Key::phantom);
    const auto polarity = requiredBool(o, Key::polarity);
    const auto di = optionalBool(o, Key::di);
    const auto gain = optionalInteger(o, Key::gainValue);
    if (!mute || !pad || !phantom || !polarity || !di.ok || !gain.ok)
        return std::nullopt;
    return ChannelSnapshot{gain.value, *pad, *phantom, *polarity, *mute, di.value};
}

std::optional<QList<ChannelSnapshot>> readList(const QJsonValue& value)
{
    if (!value.isArray())
        return std::nullopt;
    QList<ChannelSnapshot> channels;
    for (const QJsonValue& c : value.toArray()) {
        auto snapshot = read(c);
        if (!snapshot)
            return std::nullopt;
        channels.append(*snapshot);
    }
    return channels;
}

} // namespace orvan::SnapshotJson
