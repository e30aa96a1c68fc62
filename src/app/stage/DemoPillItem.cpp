#include "DemoPillItem.h"

#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "items/Lettering.h"
#include "items/PressLook.h"

#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace orvan {

namespace {
const QColor kBodyTop = QColor::fromRgbF(0.25f, 0.85f, 0.45f);
const QColor kBodyBottom = QColor::fromRgbF(0.03f, 0.38f, 0.14f);
const QColor kGlow = QColor::fromRgbF(0.2f, 0.85f, 0.4f);
const QColor kExplanationColor = QColor::fromRgbF(0.55f, 0.95f, 0.70f, 0.9f);
constexpr double kRimWidth = 1.2;
constexpr double kLampSize = 6;
constexpr double kContentSpacing = 6;

const QString kTooltipOff = QStringLiteral("Try the app with sample settings. Nothing is sent to any unit.");
const QString kTooltipOn = QStringLiteral("Leave demo mode");
const QString kExplanation = QStringLiteral("Demo mode: sample settings, nothing is sent");

LetteringStyle labelStyle()
{
    return LetteringStyle::of(11, QFont::Bold, 1.2, Qt::white).withShadow(QColor(0, 0, 0, 128), {-0.6, 0.8});
}

LetteringStyle explanationStyle()
{
    return LetteringStyle::of(9.5, QFont::Medium, 0.6, kExplanationColor).withShadow(Qt::black, {-0.6, 0.8});
}

double explanationWidth()
{
    static const double width = letteringWidth(kExplanation, explanationStyle());
    return width;
}

QRectF pillRect()
{
    const QSizeF s = DemoPillItem::kPillSize;
    return {-s.width() / 2, -s.height() / 2, s.width(), s.height()};
}
} // namespace

DemoPillItem::DemoPillItem(QList<OrvanMIDI*> engines, DemoMode& demo, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_engines(std::move(engines))
    , m_demo(demo)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setCacheMode(DeviceCoordinateCache);
    for (OrvanMIDI* engine : m_engines)
        connect(engine, &OrvanMIDI::hardwarePresentChanged, this, &DemoPillItem::refresh);
    connect(&m_demo, &DemoMode::activeChanged, this, &DemoPillItem::refresh);
    refresh();
}

bool DemoPillItem::anyHardware() const
{
    return std::ranges::any_of(m_engines, [](const OrvanMIDI* e) { return e->hardwarePresent(); });
}

void DemoPillItem::refresh()
{
    setVisible(!anyHardware());
    setToolTip(m_demo.active() ? kTooltipOn : kTooltipOff);
    prepareGeometryChange();
    update();
}

QRectF DemoPillItem::boundingRect() const
{
    QRectF r = pillRect().adjusted(-16, -16, 16, 16);
    if (m_demo.active())
        r = r.united(QRectF(pillRect().left() + kExplanationOffset, -10,
                            explanationWidth() + 4, 20));
    return r;
}

QPainterPath DemoPillItem::shape() const
{
    QPainterPath path;
    path.addRect(pillRect()); // the explanatory line takes no clicks
    return path;
}

void DemoPillItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const bool on = m_demo.active();
    const QRectF pill = pillRect();
    const double radius = pill.height() / 2;
    QPainterPath capsule;
    capsule.addRoundedRect(pill, radius, radius);

    painter->save();
    PressLook press(*painter, pill.center(), m_pressed);

    // Drop shadow and green glow behind the body.
    painter->save();
    painter->translate(-3, 3.3);
    painter->fillPath(capsule, QColor(0, 0, 0, 150));
    painter->restore();
    const double glowRadius = on ? 12 : 7;
    QColor glow = kGlow;
    glow.setAlphaF(on ? 0.95 : 0.55);
    for (int i = 3; i >= 1; --i) {
        QPainterPath halo;
        const double grow = glowRadius * i / 3.0;
        halo.addRoundedRect(pill.adjusted(-grow, -grow, grow, grow), radius + grow, radius + grow);
        QColor c = glow;
        c.setAlphaF(glow.alphaF() * 0.22);
        painter->fillPath(halo, c);
    }

    QLinearGradient body(pill.topLeft(), pill.bottomLeft());
    body.setColorAt(0, kBodyTop);
    body.setColorAt(1, kBodyBottom);
    painter->fillPath(capsule, body);

    QLinearGradient rim(pill.topRight(), pill.bottomLeft());
    rim.setColorAt(0, QColor(255, 255, 255, 230));
    rim.setColorAt(0.5, QColor(255, 255, 255, 26));
    rim.setColorAt(1, QColor(0, 0, 0, 128));
    const double inset = kRimWidth / 2;
    QPainterPath rimPath;
    rimPath.addRoundedRect(pill.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    painter->strokePath(rimPath, QPen(QBrush(rim), kRimWidth));

    QPainterPath highlight;
    const QRectF highlightRect(pill.center().x() + 24 - 20, pill.center().y() - 8 - 1.5, 40, 3);
    highlight.addRoundedRect(highlightRect, 1.5, 1.5);
    painter->fillPath(highlight, QColor(255, 255, 255, 128));

    // Lamp and label, centred as one row.
    const QString label = on ? QStringLiteral("DEMO ON") : QStringLiteral("DEMO");
    const double labelWidth = letteringWidth(label, labelStyle());
    const double rowWidth = kLampSize + kContentSpacing + labelWidth;
    const double left = pill.center().x() - rowWidth / 2;
    const QRectF lamp(left, -kLampSize / 2, kLampSize, kLampSize);
    painter->setOpacity(on ? 1.0 : 0.55);
    if (on) {
        QRadialGradient lampGlow(lamp.center(), kLampSize / 2 + 4);
        lampGlow.setColorAt(0.4, QColor(255, 255, 255, 200));
        lampGlow.setColorAt(1, Qt::transparent);
        painter->setBrush(lampGlow);
        painter->setPen(Qt::NoPen);
        painter->drawEllipse(lamp.adjusted(-4, -4, 4, 4));
    }
    painter->setBrush(Qt::white);
    painter->setPen(Qt::NoPen);
    painter->drawEllipse(lamp);
    painter->setOpacity(1.0);
    drawLettering(*painter, QRectF(lamp.right() + kContentSpacing, -10, labelWidth + 2, 20),
                  Qt::AlignLeft | Qt::AlignVCenter, label, labelStyle());
    painter->restore();

    if (on) {
        drawLettering(*painter, QRectF(pill.left() + kExplanationOffset, -10, 1000, 20), Qt::AlignLeft | Qt::AlignVCenter,
                      kExplanation, explanationStyle());
    }
}

void DemoPillItem::mousePressEvent(QGraphicsSceneMouseEvent*)
{
    m_pressed = true;
    update();
}

void DemoPillItem::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    const bool inside = pillRect().contains(event->pos());
    if (inside != m_pressed) {
        m_pressed = inside;
        update();
    }
}

void DemoPillItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    const bool clicked = m_pressed && pillRect().contains(event->pos());
    m_pressed = false;
    update();
    if (clicked)
        activate();
}

void DemoPillItem::activate()
{
    m_demo.setActive(!m_demo.active());
}

} // namespace orvan
