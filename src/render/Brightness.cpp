#include "Brightness.h"

#include <QImage>
#include <algorithm>
#include <cmath>

namespace orvan::render {

void lowerBrightness(QImage& image, double amount)
{
    if (image.format() != QImage::Format_ARGB32_Premultiplied)
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int drop = int(std::lround(std::clamp(amount, 0.0, 1.0) * 255 * 255)); // in 1/255ths of a level
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = line[x];
            const int alpha = qAlpha(p);
            const int loss = (drop * alpha / 255 + 127) / 255; // premultiplied: scaled by coverage
            line[x] = qRgba(std::max(0, qRed(p) - loss), std::max(0, qGreen(p) - loss), std::max(0, qBlue(p) - loss),
                            alpha);
        }
    }
}

} // namespace orvan::render
