#pragma once

#include <QColor>

/// The one look every panel shares: a hard light from the upper right.
namespace orvan::render::Theme {

/// Glow of lit segments and displays, ring of lit buttons.
inline QColor blueLit() { return QColor::fromRgbF(0.3f, 0.6f, 1.0f); }
/// Engraved lettering.
inline QColor engraving() { return QColor::fromRgbF(0.88f, 0.88f, 0.88f); }

} // namespace orvan::render::Theme
