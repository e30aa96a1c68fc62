#include "PresetStorage.h"

#include "DeviceSpec.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QVariant>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

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

bool isAsciiHexDigit(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }
bool isAsciiLetterOrNumber(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

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

    const auto uuid = strictUuid(id.toString());
    // A "\ud800" escape decodes to a lone surrogate: not text, and it could not be written back.
    if (!uuid || !QStringView(name.toString()).isValidUtf16())
        return std::nullopt;

    Preset preset{*uuid, name.toString(), {}};
    for (const QJsonValue& c : channels.toArray()) {
        auto snapshot = readSnapshot(c);
        if (!snapshot)
            return std::nullopt;
        preset.channels.append(*snapshot);
    }
    return preset;
}

// --- The file system ----------------------------------------------------------------------------

/// A file descriptor closed when it goes out of scope.
class Fd {
public:
    explicit Fd(int fd = -1)
        : m_fd(fd)
    {
    }
    Fd(Fd&& other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {
    }
    Fd& operator=(Fd&&) = delete;
    ~Fd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }

private:
    int m_fd;
};

bool isBoundedRegularFile(const struct stat& st) { return S_ISREG(st.st_mode) && st.st_size <= kLargestFile; }

/// The whole file, or nothing when it is not a regular file of at most `kLargestFile` bytes. A FIFO
/// or a device is never opened: opening either can block or have effects of its own.
std::optional<QByteArray> readRegularFile(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat st {};
    if (::stat(name.constData(), &st) != 0 || !isBoundedRegularFile(st))
        return std::nullopt;
    // Non-blocking and checked again on the open file, in case the name was replaced meanwhile.
    const Fd fd(::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isOpen() || ::fstat(fd.get(), &st) != 0 || !isBoundedRegularFile(st))
        return std::nullopt;

    // One byte more than the file holds shows whether someone is writing it in place meanwhile
    // (a save never does); such a file is not read.
    QByteArray bytes(qsizetype(st.st_size) + 1, Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < bytes.size()) {
        const ssize_t n = ::read(fd.get(), bytes.data() + filled, size_t(bytes.size() - filled));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            break;
        filled += n;
    }
    if (filled == bytes.size())
        return std::nullopt;
    bytes.truncate(filled);
    return bytes;
}

bool writeAll(int fd, const QByteArray& bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        written += n;
    }
    return true;
}

/// Temporary files are named after the file they replace plus a dot and six letters or digits
/// ("presets.json.a8Zq3x"); earlier versions left the same shape behind.
constexpr qsizetype kTempSuffixLength = 6;
constexpr char kTempAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

bool isTempNameOf(const QByteArray& candidate, const QByteArray& fileName)
{
    if (candidate.size() != fileName.size() + 1 + kTempSuffixLength || !candidate.startsWith(fileName + '.'))
        return false;
    const QByteArray suffix = candidate.right(kTempSuffixLength);
    return std::ranges::all_of(suffix, [](char c) { return isAsciiLetterOrNumber(c); });
}

QByteArray newTempName(const QByteArray& fileName)
{
    QByteArray name = fileName + '.';
    for (qsizetype i = 0; i < kTempSuffixLength; ++i)
        name += kTempAlphabet[QRandomGenerator::global()->bounded(int(sizeof kTempAlphabet) - 1)];
    return name;
}

/// A save holds an exclusive lock on its temporary file until the rename; a lock that can be taken
/// means no live save owns the file (a killed process loses its locks).
bool lockWithoutWaiting(int fd) { return ::flock(fd, LOCK_EX | LOCK_NB) == 0; }

/// Removes the temporary files of `fileName` that interrupted saves left in the folder: only
/// regular files of the right name that no running save holds.
void removeLeftovers(int folderFd, const QByteArray& fileName)
{
    const int listFd = ::dup(folderFd);
    DIR* dir = listFd >= 0 ? ::fdopendir(listFd) : nullptr;
    if (!dir) {
        if (listFd >= 0)
            ::close(listFd);
        return;
    }
    QList<QByteArray> candidates;
    while (const dirent* entry = ::readdir(dir)) {
        if (isTempNameOf(entry->d_name, fileName))
            candidates.append(entry->d_name);
    }
    ::closedir(dir);

    for (const QByteArray& name : candidates) {
        const Fd fd(::openat(folderFd, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        struct stat st {};
        if (!fd.isOpen() || ::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode) || !lockWithoutWaiting(fd.get()))
            continue;
        ::unlinkat(folderFd, name.constData(), 0);
    }
}

/// Creates, locks and returns a new temporary file beside `fileName`, or an unopened Fd.
Fd createTempFile(int folderFd, const QByteArray& fileName, QByteArray& tempName)
{
    constexpr int kAttempts = 16; // a clash of random names is rare; a folder that refuses is not
    constexpr mode_t kNewFileMode = 0666; // narrowed by the umask, as for any new file
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        tempName = newTempName(fileName);
        Fd fd(::openat(folderFd, tempName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kNewFileMode));
        if (!fd.isOpen()) {
            if (errno == EEXIST)
                continue;
            return Fd();
        }
        // Another save's clean-up may have removed the name between the create and the lock.
        struct stat mine {}, named {};
        const bool stillNamed = lockWithoutWaiting(fd.get()) && ::fstat(fd.get(), &mine) == 0
            && ::fstatat(folderFd, tempName.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 && mine.st_ino == named.st_ino
            && mine.st_dev == named.st_dev;
        if (stillNamed)
            return fd;
    }
    return Fd();
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
        // A name that is not text (a lone surrogate) has no UTF-8 form: nothing is written.
        if (!QStringView(p.name).isValidUtf16())
            return {};
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
    const QFileInfo target(path);
    const QByteArray folderName = QFile::encodeName(target.absolutePath());
    const QByteArray fileName = QFile::encodeName(target.fileName());
    const Fd folder(::open(folderName.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return false;
    removeLeftovers(folder.get(), fileName);

    QByteArray tempName;
    const Fd temp = createTempFile(folder.get(), fileName, tempName);
    if (!temp.isOpen())
        return false;
    const auto discard = [&] {
        ::unlinkat(folder.get(), tempName.constData(), 0);
        return false;
    };

    // The new file keeps the old one's permissions, but its owner can always read and write it:
    // an old file of mode 000 would otherwise make the list unreadable after the save.
    struct stat old {};
    if (::fstatat(folder.get(), fileName.constData(), &old, 0) == 0 && S_ISREG(old.st_mode)
        && ::fchmod(temp.get(), (old.st_mode & ALLPERMS) | S_IRUSR | S_IWUSR) != 0)
        return discard();

    // The new bytes must be on disk before the rename makes them the file.
    if (!writeAll(temp.get(), bytes) || ::fsync(temp.get()) != 0)
        return discard();
    if (stage == WriteStage::stopBeforeRename)
        return false; // the whole temporary file stays behind, as a crash just before the rename leaves it

    // The rename replaces whatever name is at the path, whatever its mode; the folder alone decides.
    if (::renameat(folder.get(), tempName.constData(), folder.get(), fileName.constData()) != 0)
        return discard();
    ::fsync(folder.get()); // so the rename itself survives a power cut
    return true;
}

void save(const Presets& presets, const DeviceSpec& spec)
{
    const QByteArray bytes = encode(presets);
    if (bytes.isEmpty())
        return;
    writeAtomically(url(spec), bytes);
}

Presets load(const DeviceSpec& spec)
{
    const auto bytes = readRegularFile(url(spec));
    if (!bytes)
        return {};
    return decode(*bytes).value_or(Presets{});
}

} // namespace orvan::PresetStorage
