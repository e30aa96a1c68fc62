#include "PanelItem.h"

#include "OrvanMIDI.h"
#include "RCUModel.h"

#include <QGraphicsScene>
#include <QPainter>
#include <QPaintDevice>

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
        setCacheMode(DeviceCoordinateCache); // painted once per size and scale
        setAcceptedMouseButtons(Qt::NoButton);
        setZValue(-1);
    }
    QRectF boundingRect() const override
    {
        return QRectF(QPointF(0, 0), m_panel->plateSize()).marginsAdded(kShadowMargins);
    }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override { m_panel->paintPlate(*painter); }

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
    m_plate->setVisible(!inBackground);
    m_flatPlate = QImage();
}

bool PanelItem::plateInBackground() const
{
    return !m_plate->isVisible();
}

void PanelItem::paintPlateInto(QPainter& painter, QPainter::RenderHints hints)
{
    // The same steps as the layer's device-coordinate cache: paint the plate alone into a clear
    // image one pixel larger on each side than its rounded device bounds (keeping the fractional
    // offset), then lay it over what is below at the panel's opacity. Painting it straight onto
    // the backdrop would round differently, and would apply the opacity to each stroke instead
    // of to the whole plate.
    const double ratio = painter.device()->devicePixelRatioF();
    const QTransform toDevice = sceneTransform() * painter.worldTransform() * QTransform::fromScale(ratio, ratio);
    const QRect pixels = toDevice.mapRect(m_plate->boundingRect()).toRect().adjusted(-1, -1, 1, 1);
    if (m_flatPlate.isNull() || toDevice != m_flatPlateTransform || hints != m_flatPlateHints) {
        m_flatPlate = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
        m_flatPlate.fill(Qt::transparent);
        QPainter p(&m_flatPlate);
        p.setRenderHints(hints);
        p.setWorldTransform(toDevice * QTransform::fromTranslate(-pixels.left(), -pixels.top()));
        paintPlate(p);
        m_flatPlateTransform = toDevice;
        m_flatPlateHints = hints;
    }
    m_flatPlate.setDevicePixelRatio(ratio);
    painter.save();
    painter.resetTransform();
    painter.setOpacity(effectiveOpacity());
    painter.drawImage(QPointF(pixels.topLeft()) / ratio, m_flatPlate);
    painter.restore();
}

void PanelItem::startFollowing()
{
    OrvanMIDI& engine = midi();
    connect(&engine, &OrvanMIDI::channelsChanged, this, &PanelItem::refreshAll);
    connect(&engine, &OrvanMIDI::isConnectedChanged, this, &PanelItem::refreshAll);
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
        setOpacity(connected ? 1.0 : kDisconnectedOpacity);
        if (plateInBackground() && scene())
            scene()->invalidate(sceneBoundingRect(), QGraphicsScene::BackgroundLayer);
        connectionChanged(connected);
        area = boundingRect();
    }
    for (const Follower& follower : m_followers) {
        if (follower.refreshable->refresh())
            area |= follower.item->mapRectToItem(this, follower.item->boundingRect());
    }
    if (!area.isEmpty())
        emit changed(area);
}

} // namespace orvan
