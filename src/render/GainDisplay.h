#pragma once

#include <QColor>
#include <QPointF>
#include <QSizeF>
#include <optional>

class QPainter;

namespace orvan::render {

class PaintCache;

/// A channel's two-digit blue gain readout behind glass, with a "dB" legend.
struct GainDisplay {
    std::optional<qint64> dB;  ///< absent: the gain is unknown ("--")
    bool selected = false;
    bool showUnlit = true;
    QColor labelColor;

    static constexpr QSizeF kSize{68, 48};
    static constexpr QSizeF kDigit{19, 33};
    static constexpr double kDigitSpacing = 6;
};

/// Paints the readout centred on `centre`, at the painter's scale.
void paintGainDisplay(QPainter& painter, PaintCache* cache, QPointF centre, const GainDisplay& display);

} // namespace orvan::render
