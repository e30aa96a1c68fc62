#pragma once

#include <QColor>
#include <QPainterPath>
#include <QRectF>
#include <QSet>
#include <QString>
#include <array>

class QPainter;

namespace orvan::render {

class PaintCache;

/// Segments lit for each decimal digit: a top, b upper right, c lower right, d bottom, e lower
/// left, f upper left, g middle.
inline const std::array<QString, 10> digitSegments{
    QStringLiteral("abcdef"), QStringLiteral("bc"),     QStringLiteral("abged"),   QStringLiteral("abgcd"),
    QStringLiteral("fgbc"),   QStringLiteral("afgcd"),  QStringLiteral("afgedc"),  QStringLiteral("abc"),
    QStringLiteral("abcdefg"), QStringLiteral("abcdfg")};

/// The order segments are drawn in, later over earlier.
inline constexpr std::array<char, 7> kSegmentOrder{'a', 'g', 'd', 'f', 'b', 'e', 'c'};

/// The pointed bar every segment is made of: pointed top and bottom when taller than wide,
/// pointed left and right otherwise (a square lies).
namespace Hex {
QPainterPath path(const QRectF& rect);
}

/// One slanted seven-segment digit in a W x H frame.
struct SevenSegmentDigit {
    QSet<QChar> segments;
    bool showUnlit = true;
    bool glow = true;
    double width = 19;
    double height = 33;

    static QSet<QChar> forDigit(int digit);
    static QSet<QChar> dash() { return {QLatin1Char('g')}; }

    /// The frame of one segment in the digit's own (unslanted) coordinates.
    QRectF segmentFrame(char segment) const;
    /// The slant: x' = x - 0.12 y + 0.06 H.
    QTransform slant() const;
    /// A segment's outline, slanted, in the digit's frame.
    QPainterPath segmentPath(char segment) const;

    void paint(QPainter& painter, PaintCache* cache, QPointF topLeft) const;
};

inline const QColor kLitSegment = QColor::fromRgbF(0.62f, 0.84f, 1.0f);
inline const QColor kUnlitSegment = QColor::fromRgbF(0.02f, 0.05f, 0.14f);

} // namespace orvan::render
