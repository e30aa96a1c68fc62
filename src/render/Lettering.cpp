#include "Lettering.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace orvan::render {

namespace {

// Fonts are set up at a fixed large pixel size and scaled down by the painter, so that lettering
// has the same size in design points on any device (a QImage's 72 dpi or a screen's 96) and
// fractional sizes such as 6.5 points keep their exact proportions.
constexpr double kReferencePixels = 64;
constexpr double kMinimumShrink = 0.7;

QFont referenceFont(const LetteringStyle& style)
{
    QFont font;
    if (!style.family.isEmpty())
        font.setFamily(style.family);
    else if (style.monospaced)
        font.setStyleHint(QFont::Monospace);
    if (style.monospaced && style.family.isEmpty())
        font.setFamily(QStringLiteral("monospace"));
    font.setPixelSize(int(kReferencePixels));
    font.setWeight(style.weight);
    font.setItalic(style.italic);
    font.setLetterSpacing(QFont::AbsoluteSpacing, style.tracking * kReferencePixels / style.size);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

double factor(const LetteringStyle& style)
{
    return style.size / kReferencePixels;
}

} // namespace

double letteringWidth(const QString& text, const LetteringStyle& style)
{
    return QFontMetricsF(referenceFont(style)).horizontalAdvance(text) * factor(style);
}

void drawLettering(QPainter& painter, const QRectF& box, Qt::Alignment alignment, const QString& text,
                   const LetteringStyle& style)
{
    const QFont font = referenceFont(style);
    double k = factor(style);
    // Lettering never runs out of its box: a line too wide for it shrinks, down to 70 %.
    double natural = 0;
    for (const QString& line : text.split(QLatin1Char('\n')))
        natural = std::max(natural, QFontMetricsF(font).horizontalAdvance(line) * k);
    if (natural > box.width() && box.width() > 0)
        k *= std::max(box.width() / natural, kMinimumShrink);
    const QRectF scaledBox(box.x() / k, box.y() / k, box.width() / k, box.height() / k);

    painter.save();
    painter.scale(k, k);
    painter.setFont(font);
    if (style.shadowColor) {
        painter.setPen(*style.shadowColor);
        painter.drawText(scaledBox.translated(style.shadowOffset / k), int(alignment), text);
    }
    if (style.gradient) {
        QLinearGradient g = *style.gradient;
        g.setStart(g.start() / k);
        g.setFinalStop(g.finalStop() / k);
        painter.setPen(QPen(QBrush(g), 1));
    } else {
        painter.setPen(style.color);
    }
    painter.drawText(scaledBox, int(alignment), text);
    painter.restore();
}

void drawLetteringCentred(QPainter& painter, QPointF centre, const QString& text, const LetteringStyle& style)
{
    const double width = letteringWidth(text, style) + style.size;
    const double height = style.size * 2;
    drawLettering(painter, QRectF(centre.x() - width / 2, centre.y() - height / 2, width, height), Qt::AlignCenter, text,
                  style);
}

} // namespace orvan::render
