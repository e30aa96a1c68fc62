#include "Controls.h"

#include <QPainter>
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

TEST(GlossButton, OnlyALitButtonHasTheBlueRingInsideItsEdge)
{
    const QRectF face(20, 20, 46, 26);
    const auto unlit = paintAt(QSize(90, 70), [&](QPainter& p) { paintGlossButton(p, nullptr, face, false); });
    const auto lit = paintAt(QSize(90, 70), [&](QPainter& p) { paintGlossButton(p, nullptr, face, true); });
    const QPointF onRing(face.center().x(), face.bottom() - 0.8); // inside the edge
    EXPECT_TRUE(isBlueish(at(lit, onRing)));
    EXPECT_FALSE(isBlueish(at(unlit, onRing)));
    EXPECT_FALSE(isBlueish(at(unlit, QPointF(face.center().x(), face.bottom() + 6)))) << "no glow either";
}

TEST(GlossButton, AFlatButtonStillGetsAHighlight)
{
    const QRectF face(10, 10, 40, 10);
    const auto image = paintAt(QSize(60, 30), [&](QPainter& p) { paintGlossButton(p, nullptr, face, false); });
    const QPointF gloss = face.center() + QPointF(0.2 * 40, -0.3 * 10);
    EXPECT_GT(qRed(at(image, gloss)), 120) << "white gloss over a dark face";
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
