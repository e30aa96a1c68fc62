#include "DemoPillItem.h"

#include "Blur.h"
#include "Centred.h"
#include "Controls.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "Lettering.h"
#include "items/PressLook.h"
#include "panels/PaintingScene.h"

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
constexpr double kLampGlowRadius = 4;
constexpr double kLampDimOpacity = 0.55;
constexpr double kContentSpacing = 6;
constexpr double kGlowRadiusOn = 12;
constexpr double kGlowRadiusOff = 7;
const QColor kDropShadow = QColor::fromRgbF(0, 0, 0, 0.75f);
constexpr double kDropShadowBlur = 1.05;
constexpr QPointF kDropShadowOffset{-3, 3.3};
constexpr QSizeF kHighlightSize{40, 3};
constexpr QPointF kHighlightOffset{24, -8};
constexpr double kHighlightOpacity = 0.5;
constexpr double kHighlightBlur = 0.5;
/// A Gaussian glow is visible out to about three times its radius.
constexpr double kGlowReach = 3 * kGlowRadiusOn;

const QString kTooltipOff = QStringLiteral("Try the app with sample settings. Nothing is sent to any unit.");
const QString kTooltipOn = QStringLiteral("Leave demo mode");
const QString kExplanation = QStringLiteral("Demo mode: sample settings, nothing is sent");

render::LetteringStyle labelStyle()
{
    return render::LetteringStyle::of(11, QFont::Bold, 1.2, Qt::white).withShadow(QColor(0, 0, 0, 128), {-0.6, 0.8});
}

render::LetteringStyle explanationStyle()
{
    return render::LetteringStyle::of(9.5, QFont::Medium, 0.6, kExplanationColor).withShadow(Qt::black, {-0.6, 0.8});
}

double explanationWidth()
{
    static const double width = render::letteringWidth(kExplanation, explanationStyle());
    return width;
}
} // namespace

DemoPillItem::DemoPillItem(QList<OrvanMIDI*> engines, DemoMode& demo, QGraphicsItem* parent)
    : PushItem(kPillSize, [&demo] { demo.setActive(!demo.active()); }, parent)
    , m_engines(std::move(engines))
    , m_demo(demo)
{
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
    emit lookChanged();
}

QRectF DemoPillItem::boundingRect() const
{
    QRectF r = faceRect().adjusted(-kGlowReach, -kGlowReach, kGlowReach, kGlowReach);
    if (m_demo.active())
        r = r.united(QRectF(faceRect().left() + kExplanationOffset, -10, explanationWidth() + 4, 20));
    return r;
}

void DemoPillItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const bool on = m_demo.active();
    const QRectF pill = faceRect();
    const double radius = pill.height() / 2;
    QPainterPath capsule;
    capsule.addRoundedRect(pill, radius, radius);

    {
        const PressLook press(*painter, boundingRect(), pill.center(), isPressed());
        QPainter& p = press.painter();

        // The drop shadow falls from the glowing pill, so it lies under the glow.
        render::paintShadow(p, PaintingScene::cacheOf(*this), capsule, kDropShadow, kDropShadowBlur, kDropShadowOffset);
        render::paintGlow(p, PaintingScene::cacheOf(*this), capsule, kGlow, on ? 0.95 : 0.55, on ? kGlowRadiusOn : kGlowRadiusOff);

        QLinearGradient body(pill.topLeft(), pill.bottomLeft());
        body.setColorAt(0, kBodyTop);
        body.setColorAt(1, kBodyBottom);
        p.fillPath(capsule, body);

        QLinearGradient rim(pill.topRight(), pill.bottomLeft());
        rim.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.9f));
        rim.setColorAt(0.5, QColor::fromRgbF(1, 1, 1, 0.1f));
        rim.setColorAt(1, QColor::fromRgbF(0, 0, 0, 0.5f));
        render::strokeInside(p, pill, radius, rim, kRimWidth);

        // A soft streak of light, painted as its own blurred image.
        const QRectF streak = render::centredRect(kHighlightOffset, kHighlightSize);
        QPainterPath highlight;
        highlight.addRoundedRect(streak, streak.height() / 2, streak.height() / 2);
        render::paintGlow(p, PaintingScene::cacheOf(*this), highlight, Qt::white, kHighlightOpacity, kHighlightBlur);

        // Lamp and label, centred as one row.
        const QString label = on ? QStringLiteral("DEMO ON") : QStringLiteral("DEMO");
        const double labelWidth = render::letteringWidth(label, labelStyle());
        const double rowWidth = kLampSize + kContentSpacing + labelWidth;
        const double left = pill.center().x() - rowWidth / 2;
        const QRectF lamp(left, -kLampSize / 2, kLampSize, kLampSize);
        QPainterPath lampPath;
        lampPath.addEllipse(lamp);
        p.setOpacity(on ? 1.0 : kLampDimOpacity);
        if (on)
            render::paintGlow(p, PaintingScene::cacheOf(*this), lampPath, Qt::white, 1, kLampGlowRadius);
        p.fillPath(lampPath, Qt::white);
        p.setOpacity(1.0);
        render::drawLettering(p, QRectF(lamp.right() + kContentSpacing, -10, labelWidth + 2, 20),
                      Qt::AlignLeft | Qt::AlignVCenter, label, labelStyle());
    }

    if (on) {
        render::drawLettering(*painter, QRectF(pill.left() + kExplanationOffset, -10, 1000, 20), Qt::AlignLeft | Qt::AlignVCenter,
                      kExplanation, explanationStyle());
    }
}

} // namespace orvan
