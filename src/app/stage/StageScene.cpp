#include "StageScene.h"

#include "AppVersion.h"
#include "Backdrop.h"
#include "DemoMode.h"
#include "DemoPillItem.h"
#include "DragStripItem.h"
#include "FooterItem.h"
#include "OrvanMIDI.h"
#include "OrvanRCUApp.h"
#include "RCUModel.h"
#include "StageGeometry.h"
#include "panels/DunraPanelItem.h"
#include "panels/MelkoPanelItem.h"
#include "panels/OrvanPanelItem.h"
#include "panels/ReflectionItem.h"

#include <QGraphicsView>
#include <QPainter>

namespace orvan {

using namespace StageGeometry;

namespace {
const QString kDedication = QStringLiteral("for everyone who mics the room by ear");
}

StageScene::StageScene(OrvanRCUApp& app, QObject* parent)
    : PaintingScene(QRectF(QPointF(0, 0), kCanvas), parent)
    , m_orvan(app.orvanModel())
    , m_dunra(app.dunraModel())
    , m_melko(app.melkoModel())
{
    setItemIndexMethod(QGraphicsScene::NoIndex); // few items, most of them updating: no BSP tree
    const auto place = [this]<typename Item>(Item* item, QPointF at) {
        item->setPos(at);
        addItem(item);
        return item;
    };

    // In stacking order: each item is drawn over those added before it.
    m_dunraPanel = place(new DunraPanelItem(m_dunra), kDunraAt);
    m_orvanPanel = place(new OrvanPanelItem(m_orvan), kOrvanAt);
    place(new ReflectionItem([this] { return new OrvanPanelItem(m_orvan); }, kOrvanPlate), kOrvanReflectionAt);
    m_melkoPanel = place(new MelkoPanelItem(m_melko), kMelkoAt);
    place(new ReflectionItem([this] { return new MelkoPanelItem(m_melko); }, kMelkoPlate), kMelkoReflectionAt);
    addItem(new DragStripItem(kCanvas.width(), kDragStripHeight));

    const double footerY = kCanvas.height() - kFooterBottom;
    place(new FooterItem(QStringLiteral("Orvan RCU ") + appVersion(), Qt::AlignLeft), {kFooterInset, footerY});
    place(new FooterItem(kDedication, Qt::AlignRight), {kCanvas.width() - kFooterInset, footerY});
    m_demoPill = place(new DemoPillItem({&m_orvan.midi(), &m_dunra.midi(), &m_melko.midi()}, DemoMode::shared()),
                       {kCanvas.width() / 2, footerY - DemoPillItem::kPillSize.height() / 2});

    for (PanelItem* panel : panels())
        connect(panel, &PanelItem::lookChanged, this, &StageScene::lookChanged);
    connect(m_demoPill, &DemoPillItem::lookChanged, this, &StageScene::lookChanged);

    setPlatesInBackground(true);
}

std::array<PanelItem*, 3> StageScene::panels() const
{
    return {m_dunraPanel, m_orvanPanel, m_melkoPanel};
}

void StageScene::setPlatesInBackground(bool inBackground)
{
    for (PanelItem* panel : panels())
        panel->setPlateInBackground(inBackground);
    invalidate(sceneRect(), BackgroundLayer);
}

void StageScene::drawBackground(QPainter* painter, const QRectF& exposed)
{
    // The layers are painted with the view's render hints, whatever the painter carries.
    const QPainter::RenderHints hints = painter->renderHints() | (views().isEmpty() ? QPainter::RenderHints() : views().first()->renderHints());
    // The window is rounded up to whole pixels: the sliver beyond the canvas stays black, with
    // no antialiased edge of the backdrop in it.
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    if (!sceneRect().contains(exposed))
        painter->fillRect(exposed, Qt::black);
    paintBackdrop(*painter, sceneRect());
    painter->restore();
    // In stacking order, as the plates' own layers would be drawn.
    for (PanelItem* panel : panels()) {
        if (panel->plateInBackground())
            panel->paintPlateInto(*painter, hints);
    }
}

void StageScene::adjustFocused(int steps)
{
    if (!m_orvan.selected().isEmpty())
        m_orvan.adjustSelected(steps);
    else if (!m_dunra.selected().isEmpty())
        m_dunra.adjustSelected(steps);
    else
        m_melko.adjustGain(steps, {0});
}

} // namespace orvan
