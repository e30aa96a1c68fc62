#include "PanelItem.h"

#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "PaintingScene.h"
#include "StaticLayerCache.h"

#include <QGraphicsScene>
#include <QPainter>
#include <QPaintDevice>
#include <cmath>

namespace orvan {

namespace {
// Plate drop shadows reach up to 8 points left and 10 below, blurred by 6.
constexpr QMarginsF kShadowMargins{16, 8, 8, 18};
}

class PanelItem::PlateLayer final : public QGraphicsItem {
public:
    explicit PlateLayer(PanelItem* panel)
        : QGraphicsItem(panel)
        , m_panel(panel)
    {
        // No item cache: the plate image is this layer's cache, at device resolution already.
        setAcceptedMouseButtons(Qt::NoButton);
        setZValue(-1);
    }
    QRectF boundingRect() const override { return m_panel->boundingRect(); }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override
    {
        m_panel->drawFlatPlate(*painter, painter->worldTransform(), painter->renderHints(), painter->opacity());
    }

private:
    PanelItem* m_panel;
};

PanelItem::PanelItem(RCUModel& model, QSizeF plateSize, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_model(model)
    , m_plateSize(plateSize)
    , m_plate(new PlateLayer(this))
{
    setFlag(ItemHasNoContents);
}

OrvanMIDI& PanelItem::midi() const
{
    return m_model.midi();
}

QRectF PanelItem::boundingRect() const
{
    return QRectF(QPointF(0, 0), m_plateSize).marginsAdded(kShadowMargins);
}

void PanelItem::setPlateInBackground(bool inBackground)
{
    m_plateInBackground = inBackground;
    placePlate();
}

bool PanelItem::plateInBackground() const
{
    return !m_plate->isVisible();
}

void PanelItem::placePlate()
{
    m_plate->setVisible(!(m_plateInBackground && plateCanBeFlattened()));
}

void PanelItem::paintPlateInto(QPainter& painter, QPainter::RenderHints hints)
{
    drawFlatPlate(painter, sceneTransform() * painter.worldTransform(), hints, effectiveOpacity());
}

void PanelItem::drawFlatPlate(QPainter& painter, const QTransform& toPainter, QPainter::RenderHints hints, double opacity)
{
    // The plate is painted alone and then laid over what is below at the panel's opacity, as
    // an item cache would be: painting it straight onto the backdrop would round differently and
    // apply the opacity to each stroke instead of to the whole plate.
    const double ratio = painter.device()->devicePixelRatioF();
    const QTransform toDevice = toPainter * QTransform::fromScale(ratio, ratio);
    const QPoint shift(int(std::floor(toDevice.dx())), int(std::floor(toDevice.dy())));
    const QTransform withinPixel(toDevice.m11(), toDevice.m12(), toDevice.m21(), toDevice.m22(), toDevice.dx() - shift.x(),
                                 toDevice.dy() - shift.y());
    if (m_flat.image.isNull() || withinPixel != m_flat.toDevice || hints != m_flat.hints)
        m_flat = flatPlate(withinPixel, hints);
    m_flat.image.setDevicePixelRatio(ratio);
    painter.save();
    painter.resetTransform();
    painter.setOpacity(opacity);
    painter.drawImage(QPointF(m_flat.origin + shift) / ratio, m_flat.image);
    painter.restore();
}

PanelItem::FlatPlate PanelItem::flatPlate(const QTransform& toDevice, QPainter::RenderHints hints) const
{
    QRectF seen = m_plate->boundingRect();
    seen.setTop(std::max(seen.top(), m_plateSeenFrom));
    // Whatever the plate paints outside the image is clipped away, and cheaply.
    const QRect pixels = toDevice.mapRect(seen).toRect().adjusted(-1, -1, 1, 1);
    FlatPlate flat{QImage(), toDevice, hints, pixels.topLeft()};

    // Named by what it shows and how it lies on the device; the key adds the build.
    QByteArray description = QByteArray(metaObject()->className()) + ' ' + QByteArray::number(int(hints)) + ' '
        + QByteArray::number(seen.top(), 'g', 17);
    for (double m : {toDevice.m11(), toDevice.m12(), toDevice.m21(), toDevice.m22(), toDevice.dx(), toDevice.dy()})
        description += ' ' + QByteArray::number(m, 'g', 17);
    const QString name = QString::fromLatin1(metaObject()->className()).section(QLatin1String("::"), -1) + QLatin1Char('-')
        + QString::number(qHashBits(description.constData(), std::size_t(description.size()), 0), 16);
    const quint64 key = StaticLayerCache::keyFor(description);

    flat.image = StaticLayerCache::load(name, key, pixels.size());
    if (flat.image.isNull()) {
        flat.image = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
        flat.image.fill(Qt::transparent);
        QPainter p(&flat.image);
        p.setRenderHints(hints);
        p.setWorldTransform(toDevice * QTransform::fromTranslate(-pixels.left(), -pixels.top()));
        paintPlate(p);
        p.end();
        StaticLayerCache::store(name, key, flat.image);
        // Every plate is painted within the same frame; after it the grain image is not needed.
        if (auto* painting = dynamic_cast<PaintingScene*>(scene()))
            painting->releaseGrainLater();
    }
    return flat;
}

void PanelItem::startFollowing()
{
    OrvanMIDI& engine = midi();
    connect(&engine, &OrvanMIDI::channelsChanged, this, &PanelItem::refreshAll);
    connect(&engine, &OrvanMIDI::isConnectedChanged, this, &PanelItem::refreshAll);
    connect(&engine, &OrvanMIDI::hardwarePresentChanged, this, &PanelItem::refreshAll);
    connect(&m_model, &RCUModel::selectedChanged, this, &PanelItem::refreshAll);
    connect(&m_model, &RCUModel::presetsChanged, this, &PanelItem::refreshAll);
    connect(&m_model, &RCUModel::presetIndexChanged, this, &PanelItem::refreshAll);
    m_wasConnected = !engine.isConnected(); // force the first connection look
    refreshAll();
}

void PanelItem::refreshAll()
{
    QRectF area;
    const bool connected = midi().isConnected();
    if (connected != m_wasConnected) {
        m_wasConnected = connected;
        const bool wasInBackground = plateInBackground();
        setOpacity(connected ? 1.0 : kDisconnectedOpacity);
        connectionChanged(connected);
        placePlate();
        if ((wasInBackground || plateInBackground()) && scene())
            scene()->invalidate(sceneBoundingRect(), QGraphicsScene::BackgroundLayer);
        area = boundingRect();
    }
    for (const Follower& follower : m_followers) {
        if (follower.refreshable->refresh())
            area |= follower.item->mapRectToItem(this, follower.item->boundingRect());
    }
    if (!area.isEmpty())
        emit changed(area);
    emit lookChanged();
}

} // namespace orvan
