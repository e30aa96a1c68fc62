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

    auto* dunra = new DunraPanelItem(m_dunra);
    dunra->setPos(kDunraAt);
    addItem(dunra);
    m_dunraPanel = dunra;

    auto* orvan = new OrvanPanelItem(m_orvan);
    orvan->setPos(kOrvanAt);
    addItem(orvan);
    m_orvanPanel = orvan;
    auto* orvanReflection = new ReflectionItem([this] { return new OrvanPanelItem(m_orvan); }, kOrvanPlate);
    orvanReflection->setPos(kOrvanReflectionAt);
    addItem(orvanReflection);

    auto* melko = new MelkoPanelItem(m_melko);
    melko->setPos(kMelkoAt);
    addItem(melko);
    m_melkoPanel = melko;
    auto* melkoReflection = new ReflectionItem([this] { return new MelkoPanelItem(m_melko); }, kMelkoPlate);
    melkoReflection->setPos(kMelkoReflectionAt);
    addItem(melkoReflection);

    auto* strip = new DragStripItem(kCanvas.width(), kDragStripHeight);
    addItem(strip);

    auto* version = new FooterItem(QStringLiteral("Orvan RCU ") + appVersion(), Qt::AlignLeft);
    version->setPos(kFooterInset, kCanvas.height() - kFooterBottom);
    addItem(version);
    auto* dedication = new FooterItem(kDedication, Qt::AlignRight);
    dedication->setPos(kCanvas.width() - kFooterInset, kCanvas.height() - kFooterBottom);
    addItem(dedication);

    m_demoPill = new DemoPillItem({&m_orvan.midi(), &m_dunra.midi(), &m_melko.midi()}, DemoMode::shared());
    m_demoPill->setPos(kCanvas.width() / 2, kCanvas.height() - kFooterBottom - DemoPillItem::kPillSize.height() / 2);
    addItem(m_demoPill);

    for (PanelItem* panel : std::initializer_list<PanelItem*>{dunra, orvan, melko})
        connect(panel, &PanelItem::lookChanged, this, &StageScene::lookChanged);
    connect(m_demoPill, &DemoPillItem::lookChanged, this, &StageScene::lookChanged);

    setPlatesInBackground(true);
}

void StageScene::setPlatesInBackground(bool inBackground)
{
    for (PanelItem* panel : std::initializer_list<PanelItem*>{m_dunraPanel, m_orvanPanel, m_melkoPanel})
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
    painter->fillRect(exposed, Qt::black);
    paintBackdrop(*painter, sceneRect());
    painter->restore();
    // In stacking order, as the plates' own layers would be drawn.
    for (PanelItem* panel : std::initializer_list<PanelItem*>{m_dunraPanel, m_orvanPanel, m_melkoPanel}) {
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
