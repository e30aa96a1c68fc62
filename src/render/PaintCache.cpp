#include "PaintCache.h"

#include <limits>

namespace orvan::render {

namespace {

constexpr qsizetype kLargestKeptShadowBytes = 128 * 1024;
constexpr int kMostShadows = 512; // the panels' distinct small shapes are far fewer
constexpr int kMostGrains = 16;   // sizes are few and fixed; this only guards against a resize storm

/// The image under `key`, made and kept on first use. A full cache starts over rather than
/// choosing what to evict; an image above `largestKept` bytes is painted each time, never kept.
QImage lookUp(QHash<QByteArray, QImage>& images, const QByteArray& key, const std::function<QImage()>& make,
              int most, qsizetype largestKept)
{
    if (auto it = images.constFind(key); it != images.constEnd())
        return *it;
    if (images.size() > most)
        images.clear();
    QImage image = make();
    if (image.sizeInBytes() <= largestKept)
        images.insert(key, image);
    return image;
}

} // namespace

QImage PaintCache::shadow(const QByteArray& key, const std::function<QImage()>& make)
{
    return lookUp(m_shadows, key, make, kMostShadows, kLargestKeptShadowBytes);
}

QImage PaintCache::grain(const QByteArray& key, const std::function<QImage()>& make)
{
    return lookUp(m_grain, key, make, kMostGrains, std::numeric_limits<qsizetype>::max());
}

} // namespace orvan::render
