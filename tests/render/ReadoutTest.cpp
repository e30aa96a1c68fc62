#include "GainDisplay.h"
#include "SevenSegment.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace orvan::render;

TEST(Hex, ASquareLiesAndATallBarStandsOnItsPoints)
{
    const QPolygonF lying = Hex::path(QRectF(0, 0, 10, 10)).toFillPolygon();
    EXPECT_EQ(lying.first(), QPointF(0, 5)) << "pointed left";
    EXPECT_TRUE(lying.contains(QPointF(10, 5))) << "and right";
    EXPECT_FALSE(lying.contains(QPointF(5, 0)) && lying.contains(QPointF(10, 0))) << "not a rectangle";
    const QPainterPath standing = Hex::path(QRectF(0, 0, 4, 20));
    EXPECT_EQ(QPointF(standing.elementAt(0)), QPointF(2, 0));
    EXPECT_EQ(QPointF(standing.elementAt(3)), QPointF(2, 20));
}

namespace {

constexpr double kScale = 6;

/// The readout centred at (50, 40) on a plate of `plate`, six pixels a point.
QImage renderReadout(const GainDisplay& display, QColor plate = Qt::black)
{
    QImage image(QSize(100, 80) * kScale, QImage::Format_ARGB32_Premultiplied);
    image.fill(plate);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(kScale, kScale);
    paintGainDisplay(p, nullptr, QPointF(50, 40), display);
    return image;
}

/// Which segments of digit `index` (0 tens, 1 ones) are lit, probed at each segment's middle.
QString litSegments(const QImage& image, int index)
{
    const QSizeF digit = GainDisplay::kDigit;
    const double rowWidth = 2 * digit.width() + GainDisplay::kDigitSpacing;
    const QPointF topLeft(50 - rowWidth / 2 + index * (digit.width() + GainDisplay::kDigitSpacing), 40 - digit.height() / 2);
    const SevenSegmentDigit geometry{{}, true, true, digit.width(), digit.height()};
    QString lit;
    for (char s : QByteArrayLiteral("abcdefg")) {
        const QPointF centre = geometry.slant().map(geometry.segmentFrame(s).center()) + topLeft;
        const QRgb pixel = image.pixel((centre * kScale).toPoint());
        // Lit bars are pale blue (red well above 130); unlit ones and the glow stay far below.
        if (qRed(pixel) > 130)
            lit += QLatin1Char(s);
    }
    return lit;
}

} // namespace

TEST(GainDisplay, ShowsTwoDigitsOfTheValueAndADashWhenUnknown)
{
    const struct {
        std::optional<qint64> dB;
        const char* tens;
        const char* ones;
    } rows[] = {
        {std::nullopt, "g", "g"},
        {7, "abcdef", "abc"},      // 07
        {100, "abcdef", "abcdef"}, // 00
        {123, "abdeg", "abcdg"},   // 23
        {18, "bc", "abcdefg"},
    };
    for (const auto& row : rows) {
        const QImage image = renderReadout(GainDisplay{row.dB, false, true, Qt::white});
        EXPECT_EQ(litSegments(image, 0), row.tens) << (row.dB ? *row.dB : -1);
        EXPECT_EQ(litSegments(image, 1), row.ones) << (row.dB ? *row.dB : -1);
    }
}
