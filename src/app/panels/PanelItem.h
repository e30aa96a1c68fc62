#pragma once

#include "access/SpokenName.h"
#include "items/Refreshable.h"

#include <QGraphicsObject>
#include <QImage>
#include <QPainter>
#include <QTransform>
#include <functional>
#include <limits>
#include <vector>

namespace orvan {

class OrvanMIDI;
class RCUModel;

/// One unit's front panel. The plate, lettering, screws and every other part that never changes
/// are painted once into an image at device resolution (kept on disk between runs by
/// `StaticLayerCache`); the controls are child items that repaint only when what they show
/// changes. The whole panel is drawn at half opacity while its unit is not connected.
class PanelItem : public QGraphicsObject {
    Q_OBJECT

public:
    PanelItem(RCUModel& model, QSizeF plateSize, QGraphicsItem* parent = nullptr);

    RCUModel& model() const { return m_model; }
    OrvanMIDI& midi() const;
    QSizeF plateSize() const { return m_plateSize; }

    QRectF boundingRect() const override;
    void paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) override {}

    static constexpr double kDisconnectedOpacity = 0.5;

    /// With true, the plate is no longer a translucent layer of its own: the stage draws it into
    /// its opaque background through `paintPlateInto`, so a frame blends one layer fewer. A panel
    /// may keep its plate a layer for a while (`plateCanBeFlattened`).
    void setPlateInBackground(bool inBackground);
    bool plateInBackground() const;
    /// Draws the plate exactly as its own layer looks, at the panel's opacity. `painter` draws in
    /// scene coordinates; `hints` are those the view paints its items with.
    void paintPlateInto(QPainter& painter, QPainter::RenderHints hints);
    /// Only the plate from row `y` (plate coordinates) down is ever seen: a reflection shows a
    /// copy's lower edge alone, so the copy's plate image is made for that part only.
    void setPlateSeenFrom(double y) { m_plateSeenFrom = y; }

    /// Registers a control that follows the engine and model; returns it for convenience.
    template <typename Item>
    Item* follow(Item* item)
    {
        m_followers.push_back({item, item});
        return item;
    }

signals:
    /// Something the panel shows has changed inside `area` (plate coordinates), so a reflection of
    /// it must redraw that part.
    void changed(const QRectF& area);
    /// What the panel shows or says may have changed: its unit's presence, connection or channels,
    /// or its model's selection or presets. Emitted after the controls have followed, so whoever
    /// listens (the stage, the accessibility layer) reads the new state.
    void lookChanged();

protected:
    /// Paints everything that never changes, in plate coordinates.
    virtual void paintPlate(QPainter& painter) const = 0;
    /// Called when the connection changes, after the opacity was set.
    virtual void connectionChanged(bool connected) { Q_UNUSED(connected); }
    /// Whether the plate may be drawn apart from the controls now; a panel whose look is worked
    /// on as a whole (an effect) says no while that effect is on.
    virtual bool plateCanBeFlattened() const { return true; }

    /// Call at the end of the subclass's constructor, once the controls exist.
    void startFollowing();

private:
    class PlateLayer;
    /// The plate painted alone into a clear image, one pixel larger on each side than its rounded
    /// device bounds, for a transform whose offset lies within one pixel; moved by whole pixels
    /// it is reused as it is.
    struct FlatPlate {
        QImage image;
        QTransform toDevice;
        QPainter::RenderHints hints;
        QPoint origin; ///< where the image's top left pixel lies for `toDevice`
    };
    void refreshAll();
    void placePlate();
    /// Lays the plate image over what `painter` has drawn, at `opacity`; `toPainter` maps plate
    /// coordinates to the painter's logical coordinates.
    void drawFlatPlate(QPainter& painter, const QTransform& toPainter, QPainter::RenderHints hints, double opacity);
    FlatPlate flatPlate(const QTransform& toDevice, QPainter::RenderHints hints) const;

    RCUModel& m_model;
    QSizeF m_plateSize;
    PlateLayer* m_plate;
    struct Follower {
        Refreshable* refreshable;
        QGraphicsItem* item;
    };
    std::vector<Follower> m_followers;
    bool m_wasConnected = false;
    bool m_plateInBackground = false;
    FlatPlate m_flat;
    double m_plateSeenFrom = -std::numeric_limits<double>::infinity();
};

/// Puts a control at `at` on its panel with the name a screen reader says and, when one is given,
/// a tooltip (a control that words its own tooltip gets none); returns the control.
template <typename Item>
Item* placeControl(Item* item, QPointF at, const QString& spoken, const QString& tip = {})
{
    item->setPos(at);
    setSpokenName(item, spoken);
    if (!tip.isEmpty())
        item->setToolTip(tip);
    return item;
}

} // namespace orvan
