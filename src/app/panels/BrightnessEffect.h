#pragma once

#include <QGraphicsEffect>

namespace orvan {

/// Lowers every colour channel of what an item and its children draw by a fixed amount (clamped
/// at 0), as a brightness change does, then lays the result down at `opacity`. A black layer over
/// the item cannot do this: it would scale the channels, not lower them, and it would fade with
/// the item's own opacity. The item itself stays opaque, so the darkening sees full colours.
class BrightnessEffect final : public QGraphicsEffect {
public:
    BrightnessEffect(double lowering, double opacity, QObject* parent = nullptr);

protected:
    void draw(QPainter* painter) override;

private:
    double m_lowering;
    double m_opacity;
};

} // namespace orvan
