#pragma once

#include <QColor>

/// The lamp colours of the panels.
namespace orvan::LampColors {

inline const QColor red = QColor::fromRgbF(1.0f, 0.23f, 0.19f);
inline const QColor green = QColor::fromRgbF(0.20f, 0.78f, 0.35f);
inline const QColor yellow = QColor::fromRgbF(1.0f, 0.80f, 0.0f);
inline const QColor orange = QColor::fromRgbF(1.0f, 0.58f, 0.0f);
inline const QColor cyan = QColor::fromRgbF(0.20f, 0.75f, 0.95f);

} // namespace orvan::LampColors
