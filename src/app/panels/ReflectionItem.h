#pragma once

#include <QGraphicsObject>
#include <QImage>
#include <functional>
#include <memory>


namespace orvan {

class PaintingScene;
class PanelItem;

/// The mirrored, fading reflection of a panel on the stage floor. It is a live copy: a second
/// instance of the panel, bound to the same engine and model, lives in a private scene; its
/// lower edge is rendered mirrored, masked, softened and clipped into a cached image, which is
/// refreshed only when that panel's look changes. It takes no input.
class ReflectionItem final : public QGraphicsObject {
    Q_OBJECT

public:
    ReflectionItem(std::function<PanelItem*()> makeCopy, QSizeF plateSize, QGraphicsItem* parent = nullptr);
    ~ReflectionItem() override;

    static constexpr double kHeight = 150;
    static constexpr double kTopPadding = 3;
    static constexpr double kMaskOpacity = 0.42;
    static constexpr double kBlurRadius = 0.7;

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*) override;

    /// How many times the image was (partly) rebuilt: a visible panel change rebuilds once, at the
    /// next paint; a change outside the mirrored strip rebuilds nothing.
    int renderCount() const { return m_renderCount; }
    /// Where a change of the panel (plate coordinates) shows in the reflection; empty if it does not.
    QRectF mirroredArea(const QRectF& panelArea) const;
    PanelItem* copy() const { return m_copy; }

private:
    void invalidate(const QRectF& panelArea);
    /// Renders the dirty part of the reflection (all of it when the scale changed) into the image.
    void rebuild(double deviceScale);

    std::unique_ptr<PaintingScene> m_scene;
    PanelItem* m_copy;
    QSizeF m_plateSize;
    QImage m_image;
    double m_imageScale = 0;
    QRectF m_dirty; ///< in reflection coordinates
    int m_renderCount = 0;
};

} // namespace orvan
