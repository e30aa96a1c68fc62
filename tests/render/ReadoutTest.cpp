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

TEST(SevenSegmentDigit, TheReadoutsDigitGeometry)
{
    const SevenSegmentDigit d{{}, true, true, 19, 33};
    const QRectF a = d.segmentFrame('a'), c = d.segmentFrame('c');
    // bar thickness t, lying length L, upright length V; where a and c sit; the slant top and bottom
    const std::pair<double, double> measured[] = {{a.height(), 4.56}, {a.width(), 13.984}, {d.segmentFrame('f').height(), 13.992},
        {a.center().x(), 9.5}, {a.center().y(), 2.28}, {c.center().x(), 16.72}, {c.center().y(), 23.724},
        {d.slant().map(QPointF(0, 0)).x(), 1.98}, {d.slant().map(QPointF(0, 33)).x(), -1.98}};
    for (const auto& [got, expected] : measured)
        EXPECT_NEAR(got, expected, 1e-9);
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
    struct Row {
        std::optional<qint64> dB;
        const char* tens;
        const char* ones;
    };
    const Row rows[] = {
        {std::nullopt, "g", "g"},
        {7, "abcdef", "abc"},      // 07
        {100, "abcdef", "abcdef"}, // 00
        {123, "abdeg", "abcdg"},   // 23
        {18, "bc", "abcdefg"},
    };
    for (const Row& row : rows) {
        const QImage image = renderReadout(GainDisplay{row.dB, false, true, Qt::white});
        EXPECT_EQ(litSegments(image, 0), row.tens) << (row.dB ? *row.dB : -1);
        EXPECT_EQ(litSegments(image, 1), row.ones) << (row.dB ? *row.dB : -1);
    }
}

TEST(GainDisplay, SelectionBrightensTheGlowButNotTheDigits)
{
    const QImage plain = renderReadout(GainDisplay{24, false, true, Qt::white});
    const QImage selected = renderReadout(GainDisplay{24, true, true, Qt::white});
    const QPoint aboveTheGlass = (QPointF(50, 40 - 24 - 3) * kScale).toPoint();
    EXPECT_GT(qBlue(selected.pixel(aboveTheGlass)), qBlue(plain.pixel(aboveTheGlass)));

    const SevenSegmentDigit geometry{{}, true, true, 19, 33};
    const QPointF tensTop = geometry.slant().map(geometry.segmentFrame('a').center()) + QPointF(50 - 22, 40 - 16.5);
    const QPoint digitPixel = (tensTop * kScale).toPoint();
    EXPECT_EQ(plain.pixel(digitPixel), selected.pixel(digitPixel));
    EXPECT_EQ(litSegments(plain, 0), litSegments(selected, 0));
}

TEST(GainDisplay, TheDBLegendCastsTheHardShadowToo)
{
    // On a light plate, as on the Melko: the readout centred at (50, 40), its frame 68 x 48.
    const QColor plate = QColor::fromRgbF(0.7f, 0.7f, 0.7f);
    const QImage image = renderReadout(GainDisplay{24, false, true, QColor::fromRgbF(0.03f, 0.03f, 0.03f)}, plate);

    // The legend ends 3 right of and 11 below the frame's corner (84, 64); its shadow falls 3 left
    // and 3.3 down, below the legend and far below the glass's own shadow.
    int sum = 0, count = 0;
    for (double y = 75.8; y <= 78.2; y += 0.25) {
        for (double x = 75; x <= 84; x += 0.25, ++count)
            sum += qRed(image.pixel((QPointF(x, y) * kScale).toPoint()));
    }
    EXPECT_LT(sum / count, plate.red() - 15);
}
