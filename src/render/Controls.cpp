#include "Controls.h"

#include "Centred.h"
#include "RoundedShadow.h"
#include "Theme.h"

#include <QConicalGradient>
#include <QFontDatabase>
#include <QPainter>
#include <QtMath>
#include <algorithm>

namespace orvan::render {

namespace {

QColor white(double level, double alpha = 1)
{
    return QColor::fromRgbF(float(level), float(level), float(level), float(alpha));
}

QRectF circle(QPointF centre, double diameter)
{
    return centredRect(centre, {diameter, diameter});
}

QPainterPath circlePath(QPointF centre, double diameter)
{
    QPainterPath p;
    p.addEllipse(circle(centre, diameter));
    return p;
}

/// A conic gradient whose stops are evenly spaced, starting `startDegrees` clockwise from 3 o'clock.
QConicalGradient conic(QPointF centre, double startDegrees, std::initializer_list<double> levels)
{
    // Qt's conical gradient runs counter-clockwise; screen angles here run clockwise.
    QConicalGradient g(centre, -startDegrees);
    const int n = int(levels.size()) - 1;
    int i = 0;
    for (double level : levels) {
        g.setColorAt(1.0 - double(i) / n, white(level));
        ++i;
    }
    return g;
}

/// A black disc casting the hard shadow of the given depth: the well under knobs, buttons, screws.
void paintShadowedDisc(QPainter& painter, PaintCache* cache, QPointF centre, double diameter, double depth)
{
    const QPainterPath disc = circlePath(centre, diameter);
    paintHardShadow(painter, cache, disc, depth, 0.75);
    painter.fillPath(disc, Qt::black);
}

/// A disc lit along the light direction, from grey `from` (top-trailing) to `to` (bottom-leading).
void paintLitDisc(QPainter& painter, QPointF centre, double diameter, double from, double to)
{
    const QRectF r = circle(centre, diameter);
    QLinearGradient fill(r.topRight(), r.bottomLeft());
    fill.setColorAt(0, white(from));
    fill.setColorAt(1, white(to));
    painter.fillPath(circlePath(centre, diameter), fill);
}

/// The light's reflection on a round cap: white fading out from its upper-right (0.8, 0.15).
void paintCapHighlight(QPainter& painter, QPointF centre, double diameter, double opacity, double reach)
{
    const QRectF cap = circle(centre, diameter);
    QRadialGradient highlight(QPointF(cap.left() + 0.8 * diameter, cap.top() + 0.15 * diameter), reach);
    highlight.setColorAt(0, white(1, opacity));
    highlight.setColorAt(1, Qt::transparent);
    painter.fillPath(circlePath(centre, diameter), highlight);
}

} // namespace

void strokeInside(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush, double width, bool ellipse)
{
    const double inset = width / 2;
    QPainterPath path;
    const QRectF r = rect.adjusted(inset, inset, -inset, -inset);
    if (ellipse)
        path.addEllipse(r);
    else
        path.addRoundedRect(r, std::max(0.0, radius - inset), std::max(0.0, radius - inset));
    painter.strokePath(path, QPen(brush, width));
}

void paintGlossButton(QPainter& painter, PaintCache* cache, const QRectF& face, bool lit)
{
    const double r = 0.42 * face.height();
    const QRectF bezel = face.adjusted(-2.5, -2.5, 2.5, 2.5);
    QPainterPath bezelPath;
    bezelPath.addRoundedRect(bezel, r + 2, r + 2);
    QPainterPath facePath;
    facePath.addRoundedRect(face, r, r);

    paintRoundedHardShadow(painter, cache, bezel, r + 2, 3, 0.75);
    painter.fillPath(bezelPath, Qt::black);

    QLinearGradient fill(face.topRight(), face.bottomLeft());
    fill.setColorAt(0, white(0.36));
    fill.setColorAt(0.5, white(0.11));
    fill.setColorAt(1, white(0.03));
    painter.fillPath(facePath, fill);

    QLinearGradient rim(face.topRight(), face.center());
    rim.setColorAt(0, white(1, 0.9));
    rim.setColorAt(0.5, white(1, 0.05));
    rim.setColorAt(1, Qt::transparent);
    rim.setSpread(QGradient::PadSpread);
    strokeInside(painter, face, r, rim, 1.2);

    const QSizeF gloss(0.34 * face.width(), std::max(0.1 * face.height(), 2.0));
    const QPointF glossCentre = face.center() + QPointF(0.2 * face.width(), -0.3 * face.height());
    paintRoundedGlow(painter, cache, centredRect(glossCentre, gloss), gloss.height() / 2, Qt::white, 0.6, 0.5);

    // The lit ring lies on top of everything, just inside the face's edge, and glows both ways.
    if (lit) {
        constexpr double kRingWidth = 1.6;
        QPainterPath ring;
        ring.addRoundedRect(face.adjusted(kRingWidth / 2, kRingWidth / 2, -kRingWidth / 2, -kRingWidth / 2),
                            r - kRingWidth / 2, r - kRingWidth / 2);
        QPainterPathStroker stroker;
        stroker.setWidth(kRingWidth);
        paintGlow(painter, cache, stroker.createStroke(ring), Theme::blueLit(), 1.0, 5);
        painter.strokePath(ring, QPen(Theme::blueLit(), kRingWidth));
    }
}

void paintLED(QPainter& painter, PaintCache* cache, QPointF centre, double size, bool on, const QColor& color)
{
    const QRectF r = circle(centre, size);
    const QPainterPath lamp = circlePath(centre, size);
    if (on)
        paintGlow(painter, cache, lamp, color, 0.95, 4);
    QRadialGradient dome(QPointF(r.left() + 0.65 * size, r.top() + 0.30 * size), size);
    if (on) {
        QColor faded = color;
        faded.setAlphaF(0.6f);
        dome.setColorAt(0, Qt::white);
        dome.setColorAt(0.5, color);
        dome.setColorAt(1, faded);
    } else {
        dome.setColorAt(0, white(0.28));
        dome.setColorAt(1, white(0.06));
    }
    painter.fillPath(lamp, dome);
    strokeInside(painter, r, 0, QColor::fromRgbF(0, 0, 0, 0.8f), 0.8, true);
}

void paintKnob(QPainter& painter, PaintCache* cache, QPointF centre, double angle)
{
    paintShadowedDisc(painter, cache, centre, 66, 6);
    paintLitDisc(painter, centre, 62, 0.28, 0.03);

    painter.save();
    painter.translate(centre);
    painter.rotate(qRadiansToDegrees(angle));
    const QPointF origin(0, 0);
    painter.fillPath(circlePath(origin, 52), conic(origin, 35, {0.95, 0.45, 0.90, 0.30, 0.95, 0.50, 0.92, 0.35, 0.95}));
    strokeInside(painter, circle(origin, 52), 0, white(1, 0.8), 0.8, true);
    // Knurling: a dashed ring just inside the cap's edge.
    QPen knurl(QColor::fromRgbF(0, 0, 0, 0.25f), 5, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    knurl.setDashPattern({1.0 / 5, 1.6 / 5});
    knurl.setMiterLimit(10);
    painter.setPen(knurl);
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(circle(origin, 48 - 5));
    painter.fillRect(QRectF(-1, -24.5, 2, 11), QColor::fromRgbF(0, 0, 0, 0.75f));
    painter.restore();

    paintCapHighlight(painter, centre, 52, 0.55, 28); // does not turn with the cap
}

void paintScrew(QPainter& painter, PaintCache* cache, QPointF centre, double size)
{
    paintShadowedDisc(painter, cache, centre, size, 2);
    painter.fillPath(circlePath(centre, size - 3), conic(centre, 0, {0.90, 0.35, 0.85, 0.30, 0.90}));
    painter.save();
    painter.translate(centre);
    painter.rotate(-30); // every screw's slot sits at the same angle, right end raised
    QPainterPath slot;
    slot.addRoundedRect(QRectF(-0.35 * size, -0.8, 0.7 * size, 1.6), 0.8, 0.8);
    painter.fillPath(slot, QColor::fromRgbF(0, 0, 0, 0.7f));
    painter.restore();
}

void paintPowerButton(QPainter& painter, PaintCache* cache, QPointF centre, bool connected)
{
    paintShadowedDisc(painter, cache, centre, 60, 5);
    paintLitDisc(painter, centre, 55, 0.4, 0.04);

    const QColor ring = connected ? QColor::fromRgbF(0.2f, 0.78f, 0.35f, 0.9f) : QColor::fromRgbF(1, 0.23f, 0.19f, 0.8f);
    QPainterPath ringPath = circlePath(centre, 50);
    QPainterPathStroker stroker;
    stroker.setWidth(1.5);
    paintGlow(painter, cache, stroker.createStroke(ringPath), ring, 1.0, 4);
    painter.strokePath(ringPath, QPen(ring, 1.5));

    painter.fillPath(circlePath(centre, 40), conic(centre, 0, {0.85, 0.3, 0.8, 0.25, 0.85}));
    paintCapHighlight(painter, centre, 40, 0.6, 24);
}

void paintJack(QPainter& painter, PaintCache* cache, QPointF centre)
{
    paintShadowedDisc(painter, cache, centre, 40, 4);
    painter.fillPath(circlePath(centre, 36), conic(centre, 0, {0.9, 0.35, 0.85, 0.3, 0.9}));
    QRadialGradient hole(centre, 14);
    hole.setColorAt(0, white(0.12));
    hole.setColorAt(1, Qt::black);
    painter.fillPath(circlePath(centre, 26), hole);
    strokeInside(painter, circle(centre, 26), 0, white(1, 0.35), 1, true);
}

QString scriptFontFamily()
{
    static const QString family = [] {
        const QStringList families = QFontDatabase::families();
        // Families may carry their foundry: "Z003 [urw]".
        const auto installed = [&](const QString& wanted) {
            return std::ranges::any_of(families, [&](const QString& f) {
                return f == wanted || f.startsWith(wanted + QLatin1String(" ["));
            });
        };
        for (const QString& wanted : {QStringLiteral("Snell Roundhand"), QStringLiteral("Z003")}) {
            if (installed(wanted))
                return wanted;
        }
        for (const QString& f : families) {
            if (f.contains(QLatin1String("Script"), Qt::CaseInsensitive)
                || f.contains(QLatin1String("Chancery"), Qt::CaseInsensitive))
                return f;
        }
        return QString(); // the system face in italic
    }();
    return family;
}

} // namespace orvan::render
