#pragma once

#include "PaintCache.h"

#include <QGraphicsItem>
#include <QGraphicsScene>

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
        return scene ? &scene->m_paintCache : nullptr;
    }

private:
    render::PaintCache m_paintCache;
};

} // namespace orvan
