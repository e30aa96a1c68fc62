#pragma once

#include "Lettering.h"

#include <QColor>
#include <QPainterPath>
#include <QRectF>
#include <array>

class QPainter;

/// Painting shared by the three panels' static layers.
namespace orvan::render {

class PaintCache;

/// A faceplate: light-following gradient, brushed grain, hard light, bevelled border, inner line,
/// and its drop shadow.
struct PlateLook {
    double cornerRadius;
    std::array<QColor, 3> gradient;      ///< opaque stops at 0, `middleStop`, 1 along the light direction
    double middleStop;
    bool verticalGrain;
    double textureOpacity;
    double lightOpacity;
    std::array<QColor, 4> border;        ///< evenly spaced along the light direction
    double borderWidth;
    QColor innerLine;
    double innerLineWidth;
    QColor shadowColor;
    double shadowBlur;
    QPointF shadowOffset;
};

void paintPlate(QPainter& painter, PaintCache* cache, const QRectF& plate, const PlateLook& look);

/// A black rack-ear slot with a bevelled rim.
void paintRackSlot(QPainter& painter, QPointF centre, QSizeF size, double rimWidth);

/// The engraved lettering style of the dark plates.
LetteringStyle engraved(double size, QFont::Weight weight, double tracking);

/// A unit's name in the script face, filled top to bottom from white to grey 0.7, with
/// `shadowCount` crisp black shadows, each one offset further down and to the left.
void paintScriptName(QPainter& painter, QPointF centre, const QString& name, double size, int shadowCount);

} // namespace orvan::render
