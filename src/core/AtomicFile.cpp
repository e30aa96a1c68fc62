#include "AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvan::AtomicFile {

namespace {

bool isAsciiLetterOrNumber(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

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

bool isBoundedRegularFile(const struct stat& st, qint64 largest) { return S_ISREG(st.st_mode) && st.st_size <= largest; }

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
/// ("presets.json.a8Zq3x", "session.json.Q7rT2b"); earlier versions left the same shape behind.
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

std::optional<QByteArray> readRegular(const QString& path, qint64 largest)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat st {};
    if (::stat(name.constData(), &st) != 0 || !isBoundedRegularFile(st, largest))
        return std::nullopt;
    // Non-blocking and checked again on the open file, in case the name was replaced meanwhile.
    const Fd fd(::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isOpen() || ::fstat(fd.get(), &st) != 0 || !isBoundedRegularFile(st, largest))
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

bool write(const QString& path, const QByteArray& bytes, Stage stage)
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
    if (stage == Stage::stopBeforeRename)
        return false; // the whole temporary file stays behind, as a crash just before the rename leaves it

    // The rename replaces whatever name is at the path, whatever its mode; the folder alone decides.
    if (::renameat(folder.get(), tempName.constData(), folder.get(), fileName.constData()) != 0)
        return discard();
    ::fsync(folder.get()); // so the rename itself survives a power cut
    return true;
}

} // namespace orvan::AtomicFile
