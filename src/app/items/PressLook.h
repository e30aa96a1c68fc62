#pragma once

#include <QPointF>

class QPainter;
class QPainterPath;

namespace orvan {

/// The pressed look of every push button: while held down its face is drawn at 95 % about its
/// centre and darker. Scope it around the face's painting; the painter is restored on exit.
class PressLook {
public:
    static constexpr double kPressedScale = 0.95;
    static constexpr double kPressedDarkening = 0.12;

    PressLook(QPainter& painter, QPointF centre, bool pressed);
    ~PressLook();
    PressLook(const PressLook&) = delete;
    PressLook& operator=(const PressLook&) = delete;

    /// Darkens what was painted inside `face` while pressed.
    void darken(const QPainterPath& face) const;

private:
    QPainter& m_painter;
    bool m_pressed;
};

} // namespace orvan
