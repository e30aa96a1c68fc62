#include "PresetStorage.h"

#include "DeviceSpec.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <fcntl.h>
#include <unistd.h>

namespace orvan::PresetStorage {

namespace {

const QString kFolderName = QStringLiteral("OrvanRCU");
const QString kDefaultDataHome = QStringLiteral(".local/share");
constexpr int kIndentWidth = 2;

namespace Key {
const QString channels = QStringLiteral("channels");
const QString id = QStringLiteral("id");
const QString name = QStringLiteral("name");
const QString di = QStringLiteral("di");
const QString gainValue = QStringLiteral("gainValue");
const QString mute = QStringLiteral("mute");
const QString pad = QStringLiteral("pad");
const QString phantom = QStringLiteral("phantom");
const QString polarity = QStringLiteral("polarity");
} // namespace Key

QString dataHome()
{
    // A relative XDG_DATA_HOME is invalid and must be ignored.
    const QString xdg = qEnvironmentVariable("XDG_DATA_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(xdg))
        return xdg;
    return QDir::home().filePath(kDefaultDataHome);
}

// --- Writing ----------------------------------------------------------------------------------

/// A small writer for the one layout the files use. Qt's own indented output uses four spaces and
/// no space before the colon, so it cannot produce these bytes.
class Writer {
public:
    void openArray() { open('['); }
    void closeArray() { close(']'); }
    void openObject() { open('{'); }
    void closeObject() { close('}'); }

    /// Starts a member of the current object; the value follows.
    void key(const QString& name)
    {
        nextItem();
        string(name);
        m_out += " : ";
    }
    /// Starts an element of the current array.
    void element() { nextItem(); }

    void value(bool b) { m_out += b ? "true" : "false"; }
    void value(qint64 n) { m_out += QByteArray::number(n); }
    void value(const QString& s) { string(s); }

    QByteArray take() { return std::move(m_out); }

private:
    struct Level {
        bool empty = true;
    };

    void open(char bracket)
    {
        m_out += bracket;
        m_levels.push_back({});
    }
    void close(char bracket)
    {
        const bool empty = m_levels.back().empty;
        m_levels.pop_back();
        if (!empty) {
            m_out += '\n';
            indent();
        }
        m_out += bracket;
    }
    void nextItem()
    {
        Level& level = m_levels.back();
        if (!level.empty)
            m_out += ',';
        level.empty = false;
        m_out += '\n';
        indent();
    }
    void indent() { m_out.append(qsizetype(m_levels.size()) * kIndentWidth, ' '); }

    void string(const QString& s)
    {
        // Escaping works on the UTF-8 bytes: every byte that needs it is ASCII, and the bytes of a
        // multi-byte character are all 0x80 or above.
        constexpr unsigned char kFirstPrintable = 0x20;
        m_out += '"';
        for (const char ch : s.toUtf8()) {
            switch (ch) {
            case '"': m_out += "\\\""; break;
            case '\\': m_out += "\\\\"; break;
            case '\n': m_out += "\\n"; break;
            case '\r': m_out += "\\r"; break;
            case '\t': m_out += "\\t"; break;
            case '\b': m_out += "\\b"; break;
            case '\f': m_out += "\\f"; break;
            default:
                if (static_cast<unsigned char>(ch) < kFirstPrintable)
                    m_out += "\\u" + QByteArray::number(static_cast<unsigned char>(ch), 16).rightJustified(4, '0');
                else
                    m_out += ch;
            }
        }
        m_out += '"';
    }

    QByteArray m_out;
    std::vector<Level> m_levels;
};

void writeSnapshot(Writer& w, const ChannelSnapshot& s)
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

// --- Reading ----------------------------------------------------------------------------------

std::optional<bool> requiredBool(const QJsonObject& o, const QString& key)
{
    const QJsonValue v = o.value(key);
    if (!v.isBool())
        return std::nullopt;
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
    constexpr double kLargestExact = 9007199254740992.0; // 2^53: beyond it doubles skip integers
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return {};
    if (!v.isDouble())
        return {false, std::nullopt};
    const double d = v.toDouble();
    if (!std::isfinite(d) || std::trunc(d) != d || std::abs(d) > kLargestExact)
        return {false, std::nullopt};
    return {true, qint64(d)};
}

std::optional<ChannelSnapshot> readSnapshot(const QJsonValue& value)
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

    const QUuid uuid = QUuid::fromString(id.toString());
    if (uuid.isNull() && id.toString() != QUuid().toString(QUuid::WithoutBraces))
        return std::nullopt;

    Preset preset{uuid, name.toString(), {}};
    for (const QJsonValue& c : channels.toArray()) {
        auto snapshot = readSnapshot(c);
        if (!snapshot)
            return std::nullopt;
        preset.channels.append(*snapshot);
    }
    return preset;
}

/// Flushes a folder's entries (a finished rename) to disk.
void syncFolder(const QString& folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
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
    Writer w;
    w.openArray();
    for (const Preset& p : presets) {
        w.element();
        w.openObject();
        w.key(Key::channels);
        w.openArray();
        for (const ChannelSnapshot& s : p.channels) {
            w.element();
            writeSnapshot(w, s);
        }
        w.closeArray();
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

bool writeAtomically(const QString& path, const QByteArray& bytes, WriteStage stage)
{
    QSaveFile file(path);
    // Never fall back to writing over the old file in place: a failed write must leave it whole.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    // The new bytes must be on disk before the rename makes them the file (commit() syncs as
    // well; doing it here does not depend on that).
    if (!file.flush() || ::fsync(file.handle()) != 0) {
        file.cancelWriting();
        return false;
    }
    if (stage == WriteStage::stopBeforeRename)
        return false; // the destructor throws the temporary file away, as a crash would leave it
    if (!file.commit())
        return false;
    syncFolder(QFileInfo(path).absolutePath());
    return true;
}

void save(const Presets& presets, const DeviceSpec& spec)
{
    writeAtomically(url(spec), encode(presets));
}

Presets load(const DeviceSpec& spec)
{
    QFile file(url(spec));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return decode(file.readAll()).value_or(Presets{});
}

} // namespace orvan::PresetStorage
