#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <memory>

class QPainter;

namespace orvan {

/// The pressed look of every push button: while held down its face is drawn at 95 % about its
/// centre with every colour channel lowered by 0.12. Paint the face through `painter()` while the
/// scope lives; a pressed face goes through a layer that is darkened and laid down at the end.
class PressLook {
public:
    static constexpr double kPressedScale = 0.95;
    static constexpr double kPressedDarkening = 0.12;

    /// `area` holds everything the face paints (shadows and glows included), in item coordinates.
    PressLook(QPainter& painter, const QRectF& area, QPointF centre, bool pressed);
    ~PressLook();
    PressLook(const PressLook&) = delete;
    PressLook& operator=(const PressLook&) = delete;

    QPainter& painter() const { return m_layerPainter ? *m_layerPainter : m_painter; }

private:
    QPainter& m_painter;
    QRectF m_area;
    QImage m_layer;
    QSizeF m_layerSize; ///< the layer's extent in item coordinates
    std::unique_ptr<QPainter> m_layerPainter;
};

} // namespace orvan
