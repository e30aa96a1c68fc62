#pragma once

#include <QRectF>

namespace orvan::render {

/// The rectangle of `size` whose centre is `centre`.
inline QRectF centredRect(QPointF centre, QSizeF size)
{
    return {centre.x() - size.width() / 2, centre.y() - size.height() / 2, size.width(), size.height()};
}

} // namespace orvan::render
