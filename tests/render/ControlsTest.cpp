#include "Blur.h"
#include "Controls.h"
#include "PaintCache.h"
#include "RoundedShadow.h"

#include <QPainter>
#include <QPainterPath>
#include <gtest/gtest.h>

using namespace orvan::render;

TEST(PowerButton, ItsRingIsGreenWhenConnectedAndRedOtherwise)
{
    for (const bool connected : {true, false}) {
        QImage image(320, 320, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(128, 128, 128));
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(4, 4);
        paintPowerButton(p, nullptr, QPointF(40, 40), connected);
        const QRgb ring = image.pixel(QPointF(40 * 4, (40 - 25) * 4).toPoint());
        EXPECT_EQ(qGreen(ring) > qRed(ring), connected) << connected;
        EXPECT_EQ(qRed(ring) > qGreen(ring), !connected) << connected;
    }
}

// A rounded rectangle's shadow laid from nine pieces must be the picture the whole-shape blur
// gives, at plate and control sizes, at device scales 1, 2 and a fractional one, and wherever
// the pieces' seams fall between device pixels; pieces from the wrong place are off by tens.
TEST(RoundedShadow, PiecesGiveTheSamePictureAsTheWholeBlur)
{
    const struct {
        const char* name;
        QRectF rect;
        double corner, blur, scale;
        QPointF offset;
        bool filledOver; ///< an opaque plate is painted over the shadow, which may skip its middle
    } cases[] = {
        {"a plate at 1x", {20.3, 14.6, 300, 120}, 9, 6, 1, {-8, 10}, false},
        {"a plate at 2x, under its opaque fill", {20.3, 14.6, 300, 120}, 9, 6, 2, {-7, 8}, true},
        {"a plate on the stage at 0.8", {30.37, 20.61, 700, 160}, 4, 5, 0.8, {-7, 8}, true},
        {"a narrow readout at 1.25x", {16, 12, 90.4, 31.7}, 4, 1.05, 1.25, {-3, 3.3}, false},
        {"a soft glow at 2x", {30, 30, 160, 100}, 14, 8, 2, {0, 0}, false},
        {"a plate upside down, as its reflection paints it", {30.37, 20.61, 700, 160}, 4, 5, -0.8, {-7, 8}, true},
    };
    PaintCache cache;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto paint = [&](bool pieces) {
            const double scale = std::abs(c.scale);
            const QSize size = (c.rect.size() + QSizeF(60, 60)).toSize() * scale;
            QImage image(size, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            QPainter p(&image);
            p.setRenderHint(QPainter::Antialiasing); // as the stage paints: edges cut pixels
            if (c.scale < 0) // mirrored top to bottom
                p.translate(0, size.height());
            p.scale(scale, c.scale);
            p.translate(10, 0);
            const QColor color = QColor::fromRgbF(0.1f, 0.2f, 0.9f, 0.8f);
            QPainterPath shape;
            shape.addRoundedRect(c.rect, c.corner, c.corner);
            const QRectF filled = c.filledOver ? c.rect.adjusted(c.corner, c.corner, -c.corner, -c.corner) : QRectF();
            if (pieces)
                paintRoundedShadow(p, &cache, c.rect, c.corner, color, c.blur, c.offset, filled);
            else
                paintShadow(p, nullptr, shape, color, c.blur, c.offset);
            if (c.filledOver)
                p.fillPath(shape, QColor(90, 100, 120));
            return image;
        };
        const QImage whole = paint(false), sliced = paint(true);
        int worst = 0, strongest = 0;
        for (int y = 0; y < whole.height(); ++y) {
            for (int x = 0; x < whole.width(); ++x) {
                const QRgb a = whole.pixel(x, y), b = sliced.pixel(x, y);
                strongest = std::max(strongest, qAlpha(a));
                worst = std::max({worst, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                  std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
            }
        }
        ASSERT_GT(strongest, 150) << "a shadow was painted";
        EXPECT_LE(worst, 1); // both lay the same samples; one level of rounding
    }
}
