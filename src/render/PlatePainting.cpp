#include "PlatePainting.h"

#include "BrushedTexture.h"
#include "Centred.h"
#include "Controls.h"
#include "HardLight.h"
#include "RoundedShadow.h"
#include "Theme.h"

#include <QPainter>

namespace orvan::render {

namespace {
QLinearGradient alongLight(const QRectF& r)
{
    // The light falls from the top-trailing corner to the bottom-leading one.
    return QLinearGradient(r.topRight(), r.bottomLeft());
}
} // namespace

void paintPlate(QPainter& painter, PaintCache* cache, const QRectF& plate, const PlateLook& look)
{
    QPainterPath shape;
    shape.addRoundedRect(plate, look.cornerRadius, look.cornerRadius);

    // The plate's opaque fill covers the shadow's middle; only the round corners let it through.
    const QRectF filled = plate.adjusted(look.cornerRadius, look.cornerRadius, -look.cornerRadius, -look.cornerRadius);
    paintRoundedShadow(painter, cache, plate, look.cornerRadius, look.shadowColor, look.shadowBlur, look.shadowOffset, filled);

    QLinearGradient fill = alongLight(plate);
    fill.setColorAt(0, look.gradient[0]);
    fill.setColorAt(look.middleStop, look.gradient[1]);
    fill.setColorAt(1, look.gradient[2]);
    painter.fillPath(shape, fill);

    painter.save();
    painter.setClipPath(shape, Qt::IntersectClip);
    painter.setOpacity(look.textureOpacity);
    paintBrushedTexture(painter, cache, plate, look.verticalGrain);
    painter.setOpacity(look.lightOpacity);
    paintHardLight(painter, plate);
    painter.restore();

    // Border stroked inside the outline, then a thin dark line inset by 2.
    QLinearGradient border = alongLight(plate);
    for (int i = 0; i < 4; ++i)
        border.setColorAt(i / 3.0, look.border[size_t(i)]);
    strokeInside(painter, plate, look.cornerRadius, border, look.borderWidth);

    QPainterPath inner;
    const double inset = 2;
    inner.addRoundedRect(plate.adjusted(inset, inset, -inset, -inset), std::max(0.0, look.cornerRadius - inset),
                         std::max(0.0, look.cornerRadius - inset));
    painter.strokePath(inner, QPen(look.innerLine, look.innerLineWidth));
}

void paintRackSlot(QPainter& painter, QPointF centre, QSizeF size, double rimWidth)
{
    const QRectF slot = centredRect(centre, size);
    const double radius = size.height() / 2;
    QPainterPath capsule;
    capsule.addRoundedRect(slot, radius, radius);
    painter.fillPath(capsule, Qt::black);
    QLinearGradient rim = alongLight(slot);
    rim.setColorAt(0, Qt::black);
    rim.setColorAt(1, QColor::fromRgbF(1, 1, 1, 0.55f));
    painter.strokePath(capsule, QPen(QBrush(rim), rimWidth));
}

LetteringStyle engraved(double size, QFont::Weight weight, double tracking)
{
    // Cut into the metal: light letters with a crisp dark shadow up and to the left.
    return LetteringStyle::of(size, weight, tracking, Theme::engraving())
        .withShadow(QColor::fromRgbF(0, 0, 0, 0.9f), {-0.6, 0.8});
}

void paintScriptName(QPainter& painter, QPointF centre, const QString& name, double size, int shadowCount)
{
    constexpr QPointF kShadowOffset{-1, 1.2};
    LetteringStyle style = LetteringStyle::of(size, QFont::Normal, 0, Qt::white)
                               .withFamily(scriptFontFamily(), true);
    // A shadow applied again falls from the letters and their first shadow together: the n-th
    // copy lies n offsets away. Deepest first.
    LetteringStyle shadow = style;
    shadow.color = Qt::black;
    for (int n = shadowCount; n >= 1; --n)
        drawLetteringCentred(painter, centre + kShadowOffset * n, name, shadow);

    // A vertical white-to-grey fill is drawn by letting the gradient be the text pen.
    QLinearGradient fill(0, centre.y() - size / 2, 0, centre.y() + size / 2);
    fill.setColorAt(0, Qt::white);
    fill.setColorAt(1, QColor::fromRgbF(0.7f, 0.7f, 0.7f));
    style.gradient = fill;
    drawLetteringCentred(painter, centre, name, style);
}

} // namespace orvan::render
