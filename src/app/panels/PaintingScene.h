#pragma once

#include "PaintCache.h"

#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QTimer>
#include <memory>

namespace orvan {

/// A scene that keeps the paint cache its items paint with, for as long as the scene lives.
class PaintingScene : public QGraphicsScene {
public:
    using QGraphicsScene::QGraphicsScene;

    /// The cache of the scene `item` lies on; none (everything painted afresh) when that is not
    /// a painting scene.
    static render::PaintCache* cacheOf(const QGraphicsItem& item)
    {
        auto* scene = dynamic_cast<PaintingScene*>(item.scene());
        return scene ? scene->m_paintCache.get() : nullptr;
    }

    /// Frees the grain images once the current frame is over (the plates keep their own painting).
    void releaseGrainLater()
    {
        QTimer::singleShot(0, this, [this] { m_paintCache->releaseGrain(); });
    }

    /// Paints with `other`'s cache from now on: a private scene of copies (the reflections')
    /// shows the same controls, whose shadows need not be blurred twice.
    void shareCacheWith(const PaintingScene& other) { m_paintCache = other.m_paintCache; }

private:
    std::shared_ptr<render::PaintCache> m_paintCache = std::make_shared<render::PaintCache>();
};

} // namespace orvan
