#pragma once

#include "Blur.h"

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>

class QPainter;

/// The panel controls' faces. All take centres or frames in points and paint at any scale; the
/// panels add the engraved captions and the behaviour.
namespace orvan::render {

/// Strokes the outline of the rounded rectangle `rect` (or of its ellipse) with a line that lies
/// entirely inside it.
void strokeInside(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush, double width,
                  bool ellipse = false);

/// A glossy rounded push button: bezel, face, rim, gloss, and, when lit, the blue ring and glow.
/// `face` is the W x H face; the bezel reaches 2.5 points beyond it.
void paintGlossButton(QPainter& painter, PaintCache* cache, const QRectF& face, bool lit);

/// A round indicator lamp of diameter `size`.
void paintLED(QPainter& painter, PaintCache* cache, QPointF centre, double size, bool on, const QColor& color);

/// The 66-point rotary knob; `angle` in radians turns the cap (0 points straight up).
void paintKnob(QPainter& painter, PaintCache* cache, QPointF centre, double angle);

/// A slotted screw head of diameter `size`.
void paintScrew(QPainter& painter, PaintCache* cache, QPointF centre, double size);

/// The round POWER button face (60 points): its ring is green when connected, red otherwise.
void paintPowerButton(QPainter& painter, PaintCache* cache, QPointF centre, bool connected);

/// An input jack socket (40 points).
void paintJack(QPainter& painter, PaintCache* cache, QPointF centre);

/// The script face for the units' names: "Snell Roundhand" when installed, else URW's Z003, else
/// any installed face whose name says it is a script.
QString scriptFontFamily();

} // namespace orvan::render
