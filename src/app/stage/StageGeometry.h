#pragma once

#include <QPointF>
#include <QSizeF>

/// Where things stand on the stage, in design points (origin top left, y down). The canvas is
/// drawn at 0.8, so the window's content is 1297.6 x 468.
namespace orvan::StageGeometry {

inline constexpr QSizeF kCanvas{1622, 585};
inline constexpr double kScale = 0.8;
inline constexpr QSizeF kWindow{kCanvas.width() * kScale, kCanvas.height() * kScale};

inline constexpr double kDragStripHeight = 24;
inline constexpr double kColumnSpacing = 3;
inline constexpr QPointF kLeftColumn{24, 24};
inline constexpr QPointF kRightColumn{1486, 24};

inline constexpr QSizeF kOrvanPlate{1440, 260};
inline constexpr QSizeF kDunraPlate{1440, 132};
inline constexpr QSizeF kMelkoPlate{112, 395};
inline constexpr double kReflectionHeight = 150;

inline constexpr double kFooterInset = 28;
inline constexpr double kFooterBottom = 8;

// The left column stacks Dunra, Orvan and the Orvan's reflection; the right one Melko and its
// reflection. Items of a column share its left edge (the Dunra and Orvan plates are equally wide).
inline constexpr QPointF kDunraAt = kLeftColumn;
inline constexpr QPointF kOrvanAt{kLeftColumn.x(), kDunraAt.y() + kDunraPlate.height() + kColumnSpacing};
inline constexpr QPointF kOrvanReflectionAt{kLeftColumn.x(), kOrvanAt.y() + kOrvanPlate.height() + kColumnSpacing};
inline constexpr QPointF kMelkoAt = kRightColumn;
inline constexpr QPointF kMelkoReflectionAt{kRightColumn.x(), kMelkoAt.y() + kMelkoPlate.height() + kColumnSpacing};

} // namespace orvan::StageGeometry
