#include "Blur.h"
#include "Controls.h"
#include "PaintCache.h"
#include "PlatePainting.h"
#include "RoundedShadow.h"

#include <QPainter>
#include <QPainterPath>
#include <gtest/gtest.h>

using namespace orvan::render;

namespace {
constexpr int kScale = 4;

template <typename Paint>
QImage paintAt(QSize size, Paint paint)
{
    QImage image(size * kScale, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(128, 128, 128));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(kScale, kScale);
    paint(p);
    return image;
}

QRgb at(const QImage& image, QPointF point)
{
    return image.pixel((point * kScale).toPoint());
}

bool isBlueish(QRgb c)
{
    return qBlue(c) > qRed(c) + 40;
}
} // namespace

TEST(GlossButton, OnlyALitButtonHasTheBlueRingInsideItsEdgeAndAFlatOneStillGetsItsGloss)
{
    const QRectF face(20, 20, 46, 26);
    const auto unlit = paintAt(QSize(90, 70), [&](QPainter& p) { paintGlossButton(p, nullptr, face, false); });
    const auto lit = paintAt(QSize(90, 70), [&](QPainter& p) { paintGlossButton(p, nullptr, face, true); });
    const QPointF onRing(face.center().x(), face.bottom() - 0.8); // inside the edge
    EXPECT_TRUE(isBlueish(at(lit, onRing)));
    EXPECT_FALSE(isBlueish(at(unlit, onRing)));
    EXPECT_FALSE(isBlueish(at(unlit, QPointF(face.center().x(), face.bottom() + 6)))) << "no glow either";
    const QRectF flat(10, 10, 40, 10);
    const auto image = paintAt(QSize(60, 30), [&](QPainter& p) { paintGlossButton(p, nullptr, flat, false); });
    EXPECT_GT(qRed(at(image, flat.center() + QPointF(0.2 * 40, -0.3 * 10))), 120) << "a flat button still gets its white gloss";
}

TEST(LED, OffIsADarkDomeWithoutGlowAndOnGlowsInItsColour)
{
    const QColor red = QColor::fromRgbF(1, 0.23f, 0.19f);
    const auto off = paintAt(QSize(30, 30), [&](QPainter& p) { paintLED(p, nullptr, QPointF(15, 15), 10, false, red); });
    const auto on = paintAt(QSize(30, 30), [&](QPainter& p) { paintLED(p, nullptr, QPointF(15, 15), 10, true, red); });
    EXPECT_LT(qRed(at(off, QPointF(15, 15))), 60);
    EXPECT_EQ(at(off, QPointF(15, 22)), qRgb(128, 128, 128)) << "no glow beside an unlit lamp";
    EXPECT_GT(qRed(at(on, QPointF(15, 15))), 200);
    EXPECT_GT(qRed(at(on, QPointF(15, 22))), qRed(at(off, QPointF(15, 22))));
}

TEST(Knob, ThePointerTurnsWithTheAngleButTheHighlightStays)
{
    const auto up = paintAt(QSize(80, 80), [&](QPainter& p) { paintKnob(p, nullptr, QPointF(40, 40), 0); });
    const auto right = paintAt(QSize(80, 80), [&](QPainter& p) { paintKnob(p, nullptr, QPointF(40, 40), M_PI / 2); });
    const QPointF noon(40, 40 - 19), three(40 + 19, 40);
    EXPECT_LT(qRed(at(up, noon)), qRed(at(right, noon))) << "pointer at 12 o'clock";
    EXPECT_LT(qRed(at(right, three)), qRed(at(up, three))) << "pointer at 3 o'clock";
}

TEST(PowerButton, ItsRingIsGreenWhenConnectedAndRedOtherwise)
{
    const QPointF onRing(40, 40 - 25);
    const auto connected = paintAt(QSize(80, 80), [&](QPainter& p) { paintPowerButton(p, nullptr, QPointF(40, 40), true); });
    const auto missing = paintAt(QSize(80, 80), [&](QPainter& p) { paintPowerButton(p, nullptr, QPointF(40, 40), false); });
    EXPECT_GT(qGreen(at(connected, onRing)), qRed(at(connected, onRing)));
    EXPECT_GT(qRed(at(missing, onRing)), qGreen(at(missing, onRing)));
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

TEST(ScriptName, EachShadowLiesOneOffsetFurtherOut)
{
    const auto darkPixels = [](int shadows) {
        QImage image(200, 80, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.scale(2, 2);
        paintScriptName(painter, QPointF(50, 20), QStringLiteral("Orvan"), 40, shadows);
        painter.end();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                dark += qRed(image.pixel(x, y)) < 40;
        return dark;
    };
    EXPECT_GT(darkPixels(2), darkPixels(1) * 1.5) << "the second shadow shows beside the first";
}
