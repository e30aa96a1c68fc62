#pragma once

class QImage;

namespace orvan::render {

/// Lowers every colour channel by `amount` (0 to 1), clamped at 0, as a brightness change does:
/// a grey of 0.33 pressed by 0.12 becomes 0.21, not 0.33 x 0.88. Works on premultiplied pixels,
/// so a half-transparent pixel loses half as much and transparent ones stay transparent.
void lowerBrightness(QImage& image, double amount);

} // namespace orvan::render
