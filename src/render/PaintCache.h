#pragma once

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <functional>

namespace orvan::render {

/// The images painting makes once and reuses: the blurred outlines of shadows and glows, and the
/// brushed grain. Whoever paints owns one and hands it to the painting functions, which keep no
/// state of their own; a null cache makes every image afresh (a one-off picture such as the icon).
class PaintCache {
public:
    /// The shadow image stored under `key`, made by `make` when missing. Plate-sized ones are
    /// not kept: each is drawn once into its plate's own image.
    QImage shadow(const QByteArray& key, const std::function<QImage()>& make);

    /// The grain image stored under `key`, made by `make` when missing.
    QImage grain(const QByteArray& key, const std::function<QImage()>& make);

    /// Frees the grain images, once whatever shows the grain keeps its own painting.
    void releaseGrain() { m_grain.clear(); }

private:
    QHash<QByteArray, QImage> m_shadows;
    QHash<QByteArray, QImage> m_grain;
};

} // namespace orvan::render
