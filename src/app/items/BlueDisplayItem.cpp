#include "BlueDisplayItem.h"

#include "Centred.h"
#include "Controls.h"
#include "RoundedShadow.h"
#include "Theme.h"
#include "panels/PaintingScene.h"

#include <QPainter>
#include <QPainterPath>

namespace orvan {

namespace {
const QColor kPaneTop = QColor::fromRgbF(0.18f, 0.38f, 1.0f);
const QColor kPaneBottom = QColor::fromRgbF(0.05f, 0.15f, 0.75f);
constexpr double kTextGrey = 0.96;

} // namespace

BlueDisplayItem::BlueDisplayItem(Look look, std::function<QStringList()> lines, QGraphicsItem* parent)
    : QGraphicsItem(parent)
    , m_look(look)
    , m_source(std::move(lines))
    , m_lines(m_source())
{
    setCacheMode(DeviceCoordinateCache);
    setAcceptedMouseButtons(Qt::NoButton);
}

QRectF BlueDisplayItem::boundingRect() const
{
    return render::centredRect({}, m_look.bezel).adjusted(-12, -10, 10, 12);
}

void BlueDisplayItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const QRectF bezel = render::centredRect({}, m_look.bezel);
    const QRectF pane = render::centredRect({}, m_look.pane);
    QPainterPath bezelPath;
    bezelPath.addRoundedRect(bezel, m_look.bezelRadius, m_look.bezelRadius);
    QPainterPath panePath;
    panePath.addRoundedRect(pane, m_look.paneRadius, m_look.paneRadius);

    render::PaintCache* cache = PaintingScene::cacheOf(*this);
    render::paintRoundedHardShadow(*painter, cache, bezel, m_look.bezelRadius, m_look.shadowDepth, 0.75);
    if (m_look.blueGlow)
        render::paintRoundedGlow(*painter, cache, bezel, m_look.bezelRadius, render::Theme::blueLit(), 0.4, 8);
    painter->fillPath(bezelPath, Qt::black);
    QLinearGradient blue(pane.topLeft(), pane.bottomLeft());
    blue.setColorAt(0, kPaneTop);
    blue.setColorAt(1, kPaneBottom);
    painter->fillPath(panePath, blue);

    const render::LetteringStyle text =
        render::LetteringStyle::of(m_look.fontSize, QFont::Medium, 0, QColor::fromRgbF(kTextGrey, kTextGrey, kTextGrey)).inMonospace();
    const double lineHeight = m_look.fontSize * 1.25;
    const double top = -lineHeight * m_lines.size() / 2;
    for (int i = 0; i < m_lines.size(); ++i) {
        const QRectF box(-m_look.textBoxWidth / 2, top + i * lineHeight, m_look.textBoxWidth, lineHeight);
        render::drawLettering(*painter, box, Qt::AlignLeft | Qt::AlignVCenter, m_lines[i], text);
    }

    if (m_look.glassHighlight) {
        // A hard-edged light band across the upper right, added onto the pane.
        QLinearGradient band(pane.topRight(), pane.bottomLeft());
        band.setColorAt(0, QColor(255, 255, 255, 77));
        band.setColorAt(0.3, QColor(255, 255, 255, 77));
        band.setColorAt(0.31, Qt::transparent);
        painter->save();
        painter->setCompositionMode(QPainter::CompositionMode_Plus);
        painter->fillPath(panePath, band);
        painter->restore();
    }
}

} // namespace orvan
