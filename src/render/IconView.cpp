#include "IconView.h"

#include "Blur.h"
#include "BrushedTexture.h"
#include "Centred.h"
#include "Controls.h"
#include "HardLight.h"
#include "SevenSegment.h"
#include "Theme.h"

#include <QPainter>

namespace orvan::render {

namespace {

QPainterPath roundedRect(const QRectF& r, double radius)
{
    QPainterPath p;
    p.addRoundedRect(r, radius, radius);
    return p;
}

QLinearGradient diagonal(const QRectF& r)
{
    return QLinearGradient(r.topRight(), r.bottomLeft());
}

void paintLens(QPainter& painter, QPointF centre, double digitGlow)
{
    const QRectF lens = centredRect(centre, IconView::kLens);
    const QPainterPath shape = roundedRect(lens, IconView::kLensRadius);

    paintShadow(painter, nullptr, shape, QColor::fromRgbF(0, 0, 0, 0.75f), 10, QPointF(-14, 20));
    paintGlow(painter, nullptr, shape, Theme::blueLit(), 0.85, 46);

    QLinearGradient glass(lens.topLeft(), lens.bottomLeft());
    glass.setColorAt(0, QColor::fromRgbF(0.07f, 0.20f, 0.75f));
    glass.setColorAt(1, QColor::fromRgbF(0.01f, 0.03f, 0.25f));
    painter.fillPath(shape, glass);

    painter.save();
    painter.setClipPath(shape, Qt::IntersectClip);
    const QPointF shifted = centre + QPointF(-38, -14);
    QRadialGradient innerGlow(shifted, 250);
    QColor strong = Theme::blueLit(), weak = Theme::blueLit();
    strong.setAlphaF(0.55f);
    weak.setAlphaF(0.18f);
    innerGlow.setColorAt(10.0 / 250, strong);
    innerGlow.setColorAt(0.5, weak);
    innerGlow.setColorAt(1, Qt::transparent);
    QPainterPath ellipse;
    ellipse.addEllipse(centredRect(shifted, QSizeF(520, 340)));
    painter.fillPath(ellipse, innerGlow);

    painter.save();
    painter.translate(lens.topLeft() + QPointF(-38, -14));
    IconDigits::paint(painter, IconView::kLens, digitGlow);
    painter.restore();

    QFont font;
    font.setPixelSize(54);
    font.setBold(true);
    painter.setFont(font);
    const QRectF legend = centredRect(centre + QPointF(185, 125), QSizeF(200, 80));
    painter.setPen(Qt::black);
    painter.drawText(legend.translated(-2, 3), Qt::AlignCenter, QStringLiteral("dB"));
    painter.setPen(Theme::engraving());
    painter.drawText(legend, Qt::AlignCenter, QStringLiteral("dB"));

    QLinearGradient reflection = diagonal(lens);
    reflection.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.2f));
    reflection.setColorAt(0.12, QColor::fromRgbF(1, 1, 1, 0.2f));
    reflection.setColorAt(0.13, Qt::transparent);
    painter.fillPath(shape, reflection);
    painter.restore();

    QLinearGradient rim = diagonal(lens);
    rim.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.95f));
    rim.setColorAt(1, QColor::fromRgbF(0, 0, 0, 0.7f));
    strokeInside(painter, lens, IconView::kLensRadius, rim, 8);
}

} // namespace

QRectF IconDigits::segmentRect(char segment)
{
    switch (segment) {
    case 'a': return {19.8, 0, 110.4, 36};
    case 'g': return {19.8, 117, 110.4, 36};
    case 'd': return {19.8, 234, 110.4, 36};
    case 'f': return {0, 18, 36, 115.2};
    case 'b': return {114, 18, 36, 115.2};
    case 'e': return {0, 136.8, 36, 115.2};
    default: return {114, 136.8, 36, 115.2}; // 'c'
    }
}

QPainterPath IconDigits::digitPath(int index, QSizeF frame)
{
    const QString lit = digitSegments[std::size_t(kDigits[index])];
    // The readout's slant for H = 270, then the digit's place in the frame.
    const QTransform slant(1, 0, -0.12, 1, 16.2, 0);
    const QTransform place = QTransform::fromTranslate((frame.width() - 344) / 2 + kDigitPitch * index,
                                                       (frame.height() - kDigitBox.height()) / 2);
    QPainterPath path;
    for (char s : kSegmentOrder) {
        if (lit.contains(QLatin1Char(s)))
            path.addPath((slant * place).map(Hex::path(segmentRect(s))));
    }
    return path;
}

void IconDigits::paint(QPainter& painter, QSizeF frame, double glow)
{
    QPainterPath all;
    for (int i = 0; i < 2; ++i)
        all.addPath(digitPath(i, frame));
    if (glow > 0)
        paintGlow(painter, nullptr, all, Theme::blueLit(), glow, 22);
    painter.fillPath(all, QColor::fromRgbF(0.7f, 0.88f, 1.0f));
}

void IconView::paint(QPainter& painter, double digitGlow)
{
    const QPointF centre(kCanvas / 2, kCanvas / 2);
    const QRectF plate = centredRect(centre, QSizeF(kPlate, kPlate));
    const QPainterPath shape = roundedRect(plate, kPlateRadius);

    // A one-off picture: nothing is painted twice, so no cache.
    paintShadow(painter, nullptr, shape, QColor::fromRgbF(0, 0, 0, 0.55f), 18, QPointF(-8, 14));

    QLinearGradient fill = diagonal(plate);
    fill.setColorAt(0, QColor::fromRgbF(0.30f, 0.34f, 0.43f));
    fill.setColorAt(0.5, QColor::fromRgbF(0.13f, 0.15f, 0.20f));
    fill.setColorAt(1, QColor::fromRgbF(0.04f, 0.05f, 0.08f));
    painter.fillPath(shape, fill);

    painter.save();
    painter.setClipPath(shape, Qt::IntersectClip);
    painter.save();
    painter.translate(plate.topLeft());
    BrushedTexture{false}.draw(painter, plate.size());
    painter.restore();
    paintHardLight(painter, plate);
    painter.restore();

    QLinearGradient rim = diagonal(plate);
    rim.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.95f));
    rim.setColorAt(1.0 / 3, QColor::fromRgbF(1, 1, 1, 0.15f));
    rim.setColorAt(2.0 / 3, Qt::transparent);
    rim.setColorAt(1, QColor::fromRgbF(0, 0, 0, 0.8f));
    strokeInside(painter, plate, kPlateRadius, rim, 6);

    paintLens(painter, centre, digitGlow);
}

QImage IconView::render()
{
    return renderWithDigitGlow(1);
}

QImage IconView::renderWithDigitGlow(double digitGlow)
{
    QImage image{int(kCanvas), int(kCanvas), QImage::Format_ARGB32_Premultiplied};
    if (image.isNull())
        return image;
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    paint(painter, digitGlow);
    painter.end();
    return image;
}

} // namespace orvan::render
