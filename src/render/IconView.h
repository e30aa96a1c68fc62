#pragma once

#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

class QPainter;

namespace orvan::render {

/// The application icon: a brushed, lit plate with rounded corners holding a blue glass lens that
/// shows a glowing "18" and a "dB" legend.
namespace IconView {
inline constexpr double kCanvas = 1024;
inline constexpr double kPlate = 824;
inline constexpr double kPlateRadius = 185;
inline constexpr QSizeF kLens{600, 400};
inline constexpr double kLensRadius = 200;

/// `digitGlow` scales the digits' glow: 1 is the artwork as designed.
void paint(QPainter& painter, double digitGlow = 1);
/// The icon at 1024 x 1024 with transparency; null if the image could not be made.
QImage render();
/// The same with the digits' glow scaled by `digitGlow` (0 to 1). Scaled down to a few pixels,
/// the glow fills the gaps between the segments, so the smallest icon sizes are drawn with less.
QImage renderWithDigitGlow(double digitGlow);
} // namespace IconView

/// The icon's two digits, "1" then "8", drawn into a frame of `frame` size.
namespace IconDigits {
inline constexpr int kDigits[] = {1, 8};
inline constexpr QSizeF kDigitBox{150, 270};
inline constexpr double kDigitPitch = 194; ///< 150 wide with a 44 gap
/// A lit segment's outline in its digit's 150 x 270 box, unslanted.
QRectF segmentRect(char segment);
/// All lit outlines of digit number `index` (0 or 1), slanted and placed in the frame.
QPainterPath digitPath(int index, QSizeF frame);
void paint(QPainter& painter, QSizeF frame, double glow = 1);
} // namespace IconDigits

} // namespace orvan::render
