#pragma once

#include <QImage>
#include <QRectF>

class QPainter;

namespace orvan::render {

class PaintCache;

/// The brushed-metal grain: a faint sheen per row (or column) and long thin scratches, the same on
/// every drawing. Grain runs top to bottom when `vertical`, left to right otherwise.
struct BrushedTexture {
    bool vertical = false;

    static constexpr std::uint64_t kSeed = 7;
    static constexpr int kVerticalScratches = 500;
    static constexpr int kHorizontalScratches = 1400;

    /// Draws the texture into `rect` directly (no cache), transparent where it draws nothing.
    void draw(QPainter& painter, QSizeF size) const;
};

/// Paints the texture into `rect`. The image depends only on (size, grain direction, device
/// scale), so it is kept in `cache` (when given) for the next plate of that size.
void paintBrushedTexture(QPainter& painter, PaintCache* cache, const QRectF& rect, bool vertical);

} // namespace orvan::render
