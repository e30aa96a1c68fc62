#include "PaintCache.h"

namespace orvan::render {

namespace {
constexpr qsizetype kLargestKeptShadowBytes = 128 * 1024;
constexpr int kMostShadows = 512; // the panels' distinct small shapes are far fewer
constexpr int kMostGrains = 16;   // sizes are few and fixed; this only guards against a resize storm
} // namespace

QImage PaintCache::shadow(const QByteArray& key, const std::function<QImage()>& make)
{
    if (auto it = m_shadows.constFind(key); it != m_shadows.constEnd())
        return *it;
    if (m_shadows.size() > kMostShadows)
        m_shadows.clear();
    QImage image = make();
    if (image.sizeInBytes() <= kLargestKeptShadowBytes)
        m_shadows.insert(key, image);
    return image;
}

QImage PaintCache::grain(const QByteArray& key, const std::function<QImage()>& make)
{
    if (auto it = m_grain.constFind(key); it != m_grain.constEnd())
        return *it;
    if (m_grain.size() > kMostGrains)
        m_grain.clear();
    QImage image = make();
    m_grain.insert(key, image);
    return image;
}

} // namespace orvan::render
