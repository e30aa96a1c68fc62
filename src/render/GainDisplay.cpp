#include "GainDisplay.h"

#include "Blur.h"
#include "Centred.h"
#include "Controls.h"
#include "SevenSegment.h"
#include "Theme.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace orvan::render {

namespace {
const QColor kGlassTop = QColor::fromRgbF(0.07f, 0.20f, 0.75f);
const QColor kGlassBottom = QColor::fromRgbF(0.01f, 0.03f, 0.25f);
constexpr double kCornerRadius = 20;
constexpr double kRimWidth = 1.4;
constexpr double kLegendSize = 7.5;
constexpr QPointF kLegendOffset{3, 11};

/// "dB" aligned to the frame's bottom-trailing corner and moved just outside it. As an outline, so
/// that it casts the readout's glow and hard shadow along with the glass.
QPainterPath legendPath(const QRectF& frame)
{
    // Its right end and bottom at the origin; set at a large pixel size and scaled down, so that
    // 7.5 points keep their proportions.
    static const QPainterPath atOrigin = [] {
        constexpr double kReferencePixels = 64;
        QFont font;
        font.setPixelSize(int(kReferencePixels));
        font.setBold(true);
        const QFontMetricsF metrics(font);
        QPainterPath text;
        text.addText(QPointF(-metrics.horizontalAdvance(QStringLiteral("dB")), -metrics.descent()), font,
                     QStringLiteral("dB"));
        const double k = kLegendSize / kReferencePixels;
        return QTransform::fromScale(k, k).map(text);
    }();
    return atOrigin.translated(frame.bottomRight() + kLegendOffset);
}

/// The tens and ones digits shown for a value; -1 stands for the dash of an unknown value.
std::pair<int, int> digits(std::optional<qint64> dB)
{
    if (!dB)
        return {-1, -1};
    // Only the last two digits show, and none is ever blanked: 7 reads 07, 100 reads 00.
    const qint64 v = *dB;
    return {int((v / 10) % 10), int(v - 10 * (v / 10))};
}
} // namespace

void paintGainDisplay(QPainter& painter, PaintCache* cache, QPointF centre, const GainDisplay& display)
{
    const QRectF frame = centredRect(centre, GainDisplay::kSize);
    QPainterPath glass;
    glass.addRoundedRect(frame, kCornerRadius, kCornerRadius);
    const QPainterPath legend = legendPath(frame);
    QPainterPath whole = glass;
    whole.addPath(legend);

    // Hard shadow, then the blue glow of the whole readout, legend included, under it.
    paintHardShadow(painter, cache, whole, 3, 0.75);
    paintGlow(painter, cache, whole, Theme::blueLit(), display.selected ? 0.85 : 0.35, display.selected ? 9 : 5);

    QLinearGradient fill(frame.topLeft(), frame.bottomLeft());
    fill.setColorAt(0, kGlassTop);
    fill.setColorAt(1, kGlassBottom);
    painter.fillPath(glass, fill);

    const auto [tens, ones] = digits(display.dB);
    const QSizeF digit = GainDisplay::kDigit;
    const double rowWidth = 2 * digit.width() + GainDisplay::kDigitSpacing;
    const QPointF rowTopLeft(frame.center().x() - rowWidth / 2, frame.center().y() - digit.height() / 2);
    QPainterPath digitShapes;
    for (int i = 0; i < 2; ++i) {
        const int value = i == 0 ? tens : ones;
        SevenSegmentDigit d{value < 0 ? SevenSegmentDigit::dash() : SevenSegmentDigit::forDigit(value),
                            display.showUnlit, true, digit.width(), digit.height()};
        const QPointF topLeft = rowTopLeft + QPointF(i * (digit.width() + GainDisplay::kDigitSpacing), 0);
        d.paint(painter, cache, topLeft);
        for (char s : kSegmentOrder) {
            if (display.showUnlit || d.segments.contains(QLatin1Char(s)))
                digitShapes.addPath(d.segmentPath(s).translated(topLeft));
        }
    }

    // A hard-edged light band across the upper right, brightening only the digit shapes.
    QLinearGradient band(frame.topRight(), frame.bottomLeft());
    band.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.22f));
    band.setColorAt(0.12, QColor::fromRgbF(1, 1, 1, 0.22f));
    band.setColorAt(0.13, Qt::transparent);
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    painter.fillPath(digitShapes, band); // the digits lie inside the glass
    painter.restore();

    // Rim stroked inside the outline.
    QLinearGradient rim(frame.topRight(), frame.bottomLeft());
    rim.setColorAt(0, QColor::fromRgbF(1, 1, 1, display.selected ? 0.95f : 0.55f));
    rim.setColorAt(1, QColor::fromRgbF(0, 0, 0, 0.7f));
    strokeInside(painter, frame, kCornerRadius, rim, kRimWidth);

    painter.fillPath(legend, display.labelColor);
}

} // namespace orvan::render
