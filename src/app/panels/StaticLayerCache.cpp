#include "StaticLayerCache.h"

#include "AppVersion.h"
#include "AtomicFile.h"

#include <QDir>
#include <QStandardPaths>
#include <QTimer>
#include <cstring>
#include <optional>
#include <elf.h>
#include <link.h>
#include <vector>

namespace orvan::StaticLayerCache {

namespace {

// Raised whenever the file layout changes; the build identity covers any change of the painting.
constexpr char kMagic[8] = {'O', 'R', 'V', 'L', 'A', 'Y', 'R', '1'};
constexpr quint64 kFnvOffset = 0xcbf29ce484222325ULL;
constexpr quint64 kFnvPrime = 0x100000001b3ULL;
constexpr int kBytesPerPixel = 4;
// Far beyond any layer of this window at any ratio: a header claiming more is not ours.
constexpr qint64 kLargestLayerPixels = qint64(1) << 26;

struct Header {
    char magic[8];
    quint64 key;
    quint32 width;
    quint32 height;
    quint64 checksum;
};
static_assert(sizeof(Header) == 32, "the header is written as it lies in memory");

quint64 fnv(quint64 hash, const void* data, std::size_t length)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < length; ++i)
        hash = (hash ^ bytes[i]) * kFnvPrime;
    return hash;
}

/// A checksum of the pixels, eight bytes at a time in four independent lanes (fast enough to
/// run on every load of a few megabytes).
quint64 checksum(const QImage& image)
{
    const auto* words = reinterpret_cast<const quint64*>(image.constBits());
    const std::size_t count = std::size_t(image.sizeInBytes()) / sizeof(quint64);
    quint64 lanes[4] = {kFnvOffset, kFnvOffset ^ 1, kFnvOffset ^ 2, kFnvOffset ^ 3};
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        for (int lane = 0; lane < 4; ++lane)
            lanes[lane] = (lanes[lane] ^ words[i + lane]) * kFnvPrime;
    }
    quint64 hash = fnv(kFnvOffset, lanes, sizeof lanes);
    return fnv(hash, words + i, (count - i) * sizeof(quint64));
}

int readBuildId(dl_phdr_info* info, std::size_t, void* out)
{
    auto* id = static_cast<QByteArray*>(out);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_NOTE)
            continue;
        const char* note = reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
        const char* end = note + segment.p_memsz;
        while (note + sizeof(ElfW(Nhdr)) <= end) {
            const auto* header = reinterpret_cast<const ElfW(Nhdr)*>(note);
            const char* name = note + sizeof(ElfW(Nhdr));
            const char* desc = name + ((header->n_namesz + 3) & ~3u);
            if (header->n_type == NT_GNU_BUILD_ID && header->n_namesz == 4 && std::memcmp(name, "GNU", 4) == 0) {
                *id = QByteArray(desc, int(header->n_descsz));
                return 1;
            }
            note = desc + ((header->n_descsz + 3) & ~3u);
        }
    }
    return 1; // the first object reported is the program itself: look no further
}

/// What the painting depends on besides its description: the program (its build id, which
/// changes with any change of the code) and the Qt that rasterises it.
const QByteArray& buildIdentity()
{
    static const QByteArray identity = [] {
        QByteArray id;
        dl_iterate_phdr(readBuildId, &id);
        return id + '/' + appVersion().toUtf8() + '/' + qVersion();
    }();
    return identity;
}

/// The folder the layers are kept in.
QString directory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/OrvanRCU");
}

QString pathOf(const QString& name)
{
    return directory() + QLatin1Char('/') + name + QStringLiteral(".layer");
}

struct Pending {
    QString name;
    quint64 key;
    QImage image;
};
std::vector<Pending>& pending()
{
    static std::vector<Pending> queue;
    return queue;
}

} // namespace

quint64 keyFor(const QByteArray& description)
{
    const QByteArray& build = buildIdentity();
    return fnv(fnv(kFnvOffset, build.constData(), std::size_t(build.size())), description.constData(),
               std::size_t(description.size()));
}

QImage load(const QString& name, quint64 key, QSize size)
{
    if (size.isEmpty())
        return {};
    // Only a plain file of exactly the right length is read: AtomicFile never opens a FIFO or a
    // device, nor reads more than that.
    const qint64 pixelBytes = qint64(size.width()) * size.height() * kBytesPerPixel;
    const qint64 fileBytes = qint64(sizeof(Header)) + pixelBytes;
    std::optional<QByteArray> bytes = AtomicFile::readRegular(pathOf(name), fileBytes);
    if (!bytes || bytes->size() != fileBytes)
        return {};
    Header header{};
    std::memcpy(&header, bytes->constData(), sizeof header);
    if (std::memcmp(header.magic, kMagic, sizeof kMagic) != 0 || header.key != key
        || header.width != quint32(size.width()) || header.height != quint32(size.height()))
        return {};
    // The image is the file's own bytes after the header (kept alive with it), not a copy.
    auto* held = new QByteArray(std::move(*bytes));
    const QImage image(reinterpret_cast<const uchar*>(held->constData()) + sizeof(Header), size.width(), size.height(),
                       qsizetype(size.width()) * kBytesPerPixel, QImage::Format_ARGB32_Premultiplied,
                       [](void* data) { delete static_cast<QByteArray*>(data); }, held);
    if (image.isNull() || checksum(image) != header.checksum)
        return {};
    return image;
}

void store(const QString& name, quint64 key, const QImage& image)
{
    if (image.format() != QImage::Format_ARGB32_Premultiplied
        || qint64(image.width()) * image.height() > kLargestLayerPixels)
        return;
    if (pending().empty())
        QTimer::singleShot(0, &writePending);
    pending().push_back({name, key, image});
}

void writePending()
{
    std::vector<Pending> queue;
    queue.swap(pending());
    if (queue.empty() || !QDir().mkpath(directory()))
        return;
    for (const Pending& layer : queue) {
        Header header{};
        std::memcpy(header.magic, kMagic, sizeof kMagic);
        header.key = layer.key;
        header.width = quint32(layer.image.width());
        header.height = quint32(layer.image.height());
        header.checksum = checksum(layer.image);
        QByteArray bytes(reinterpret_cast<const char*>(&header), sizeof header);
        bytes.append(reinterpret_cast<const char*>(layer.image.constBits()), layer.image.sizeInBytes());
        // A reader sees the old file or the new one, never half of one; whatever else stands under
        // that name (a link, a FIFO) is replaced, not written through.
        AtomicFile::write(pathOf(layer.name), bytes);
    }
}

} // namespace orvan::StaticLayerCache
