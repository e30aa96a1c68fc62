#include "MelkoPanelItem.h"

#include "BrightnessEffect.h"
#include "Centred.h"
#include "Controls.h"
#include "LampColors.h"
#include "OrvanMIDI.h"
#include "PlatePainting.h"
#include "RCUModel.h"
#include "StageGeometry.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/ReadoutItem.h"
#include "PaintingScene.h"

#include <QGraphicsRectItem>
#include <QPainter>

namespace orvan {

using render::centredRect;

namespace {

constexpr QPointF kMaker{56, 30};
constexpr double kHeadroomLampX = 16;
constexpr double kHeadroomLabelX = 96;
constexpr double kHeadroomY[] = {46, 58, 70};
constexpr QPointF kDisplay{56, 58};
constexpr double kDisplayScale = 0.78;
constexpr QPointF kGainLabel{56, 83};
constexpr double kLampX = 18;
constexpr double kButtonX = 57;
constexpr double kRowLabelX = 95;
constexpr QSizeF kRowButton{38, 20};
constexpr QPointF kScriptName{56, 276};
constexpr QPointF kKnob{58, 322};
constexpr double kKnobScale = 0.8;
constexpr double kConnectorY = 358;
constexpr QPointF kMountingHoles[] = {{56, 11}, {56, 384}};
constexpr QPointF kListenOnly{56, 372};

const QColor kDarkInk = QColor::fromRgbF(0.03f, 0.03f, 0.03f);
const QColor kListenOnlyRed = QColor::fromRgbF(0.55f, 0.1f, 0.1f);

struct Row {
    OrvanSwitch sw;
    QString label;
    QColor color;
    QString spokenLamp;
    QString spokenButton;
};
const std::array<Row, 5>& rows()
{
    static const std::array<Row, 5> table{{
        {OrvanSwitch::hpf, QStringLiteral("HPF"), LampColors::yellow, QStringLiteral("HPF 78 Hz"),
         QStringLiteral("HPF button")},
        {OrvanSwitch::phantom, QStringLiteral("48V"), LampColors::red, QStringLiteral("48V"),
         QStringLiteral("48V button")},
        {OrvanSwitch::polarity, QStringLiteral("P\u00D8L"), LampColors::yellow, QStringLiteral("Polarity"),
         QStringLiteral("Polarity button")},
        {OrvanSwitch::pad, QStringLiteral("PAD"), LampColors::orange, QStringLiteral("Pad"),
         QStringLiteral("Pad button")},
        {OrvanSwitch::mute, QStringLiteral("MUTE"), LampColors::red, QStringLiteral("Mute"),
         QStringLiteral("Mute button")},
    }};
    return table;
}

/// Dark lettering on the light plate, with a crisp white highlight below it.
render::LetteringStyle engravedDark(double size, QFont::Weight weight, double tracking)
{
    return render::LetteringStyle::of(size, weight, tracking, kDarkInk).withShadow(QColor::fromRgbF(1, 1, 1, 0.55f), {-0.6, 0.8});
}

const render::PlateLook& plateLook()
{
    static const render::PlateLook look{
        .cornerRadius = 3,
        .gradient = {QColor::fromRgbF(0.95f, 0.95f, 0.95f), QColor::fromRgbF(0.7f, 0.7f, 0.7f),
                     QColor::fromRgbF(0.4f, 0.4f, 0.4f)},
        .middleStop = 0.5,
        .verticalGrain = true,
        .textureOpacity = 1,
        .lightOpacity = 0.7,
        .border = {Qt::white, QColor::fromRgbF(1, 1, 1, 0.35f), Qt::transparent, QColor::fromRgbF(0, 0, 0, 0.75f)},
        .borderWidth = 1.6,
        .innerLine = QColor::fromRgbF(0, 0, 0, 0.25f),
        .innerLineWidth = 0.6,
        .shadowColor = QColor::fromRgbF(0, 0, 0, 0.75f),
        .shadowBlur = 5,
        .shadowOffset = {-7, 8},
    };
    return look;
}

} // namespace

MelkoPanelItem::MelkoPanelItem(RCUModel& model, std::array<double, 5> buttonY, QGraphicsItem* parent)
    : PanelItem(model, StageGeometry::kMelkoPlate, parent)
    , m_buttonY(buttonY)
{
    OrvanMIDI& engine = midi();

    m_display = follow(new ReadoutItem(
        {.scale = kDisplayScale, .labelColor = kDarkInk}, DragProfiles::melkoReadout,
        [&engine] { return shownGainDecibels(engine.channels().value(0)); }, [] { return false; },
        [&model](int steps) { model.adjustGain(steps, {0}); }, this));
    placeControl(m_display, kDisplay, QStringLiteral("Gain"), QStringLiteral("Drag or scroll to change gain"));

    for (int i = 0; i < 5; ++i) {
        const Row& row = rows()[i];
        const auto toggle = [&model, s = row.sw] { model.apply(s, {0}); };
        const LampRowItem::Look look{.lampSize = 8, .gap = 0, .labelWidth = 0, .color = row.color,
                                     .labelStyle = engravedDark(9.5, QFont::Bold, 0.2)};
        auto* lamp = follow(new LampRowItem(
            look, QString(), [&engine, s = row.sw] { return engine.channels().value(0).isOn(s); }, toggle, this));
        m_lamps[i] = placeControl(lamp, {kLampX, m_buttonY[i]}, row.spokenLamp, QStringLiteral("Toggle ") + row.label);
        m_buttons[i] = placeControl(new GlossButtonItem(kRowButton, toggle, this), {kButtonX, m_buttonY[i]},
                                    row.spokenButton);
    }

    m_knob = placeControl(follow(new KnobItem([&model] { return model.angle(0); },
                                              [&model](int steps) { model.adjustGain(steps, {0}); }, this)),
                          kKnob, QStringLiteral("Gain knob"), QStringLiteral("Turn or scroll to change gain"));
    m_knob->setScale(kKnobScale);

    auto* legend = new QGraphicsRectItem(centredRect(kListenOnly, QSizeF(48, 8)), this);
    legend->setPen(Qt::NoPen);
    legend->setAcceptedMouseButtons(Qt::NoButton);
    legend->setToolTip(QStringLiteral(
        "The Melko's MIDI messages have not been confirmed on hardware yet, so the app does not send to it."));
    setSpokenName(legend, QStringLiteral("LISTEN ONLY"));
    m_legend = legend;

    // While the unit is missing the whole plate is darker as well as half transparent.
    m_darkening = new BrightnessEffect(kDisconnectedDarkening, kDisconnectedOpacity);
    setGraphicsEffect(m_darkening);

    startFollowing();
}

void MelkoPanelItem::connectionChanged(bool connected)
{
    // The effect darkens first and fades after; the panel's own half opacity would fade first.
    setOpacity(1.0);
    m_darkening->setEnabled(!connected);
}

bool MelkoPanelItem::plateCanBeFlattened() const
{
    // The darkening works on the plate and controls together: the plate stays inside the effect.
    return !m_darkening->isEnabled();
}

void MelkoPanelItem::paintPlate(QPainter& painter) const
{
    const QRectF plate(QPointF(0, 0), plateSize());
    render::paintPlate(painter, PaintingScene::cacheOf(*this), plate, plateLook());

    render::drawLetteringCentred(painter, kMaker, QStringLiteral("TARVOLD ENGINEERING"), engravedDark(6.6, QFont::Bold, 0.3));

    const QColor headroomColors[] = {LampColors::red, LampColors::orange, LampColors::green};
    const QString headroomLabels[] = {QStringLiteral("OL"), QStringLiteral("+"), QStringLiteral("0")};
    for (int i = 0; i < 3; ++i) {
        render::paintLED(painter, PaintingScene::cacheOf(*this), QPointF(kHeadroomLampX, kHeadroomY[i]), 8, false, headroomColors[i]);
        render::drawLetteringCentred(painter, QPointF(kHeadroomLabelX, kHeadroomY[i]), headroomLabels[i],
                             engravedDark(9, QFont::Bold, 0.3));
    }
    render::drawLetteringCentred(painter, kGainLabel, QStringLiteral("GAIN"), engravedDark(9, QFont::Bold, 0.8));

    for (int i = 0; i < 5; ++i) {
        const Row& row = rows()[i];
        const double size = row.sw == OrvanSwitch::mute ? 8.5 : 9.5;
        render::drawLetteringCentred(painter, QPointF(kRowLabelX, m_buttonY[i]), row.label, engravedDark(size, QFont::Bold, 0.2));
    }
    render::drawLetteringCentred(painter, QPointF(96, m_buttonY[0] + 8), QStringLiteral("78Hz"), engravedDark(7, QFont::Bold, 0.2));

    const render::LetteringStyle script = render::LetteringStyle::of(28, QFont::Bold, 0, kDarkInk)
                                      .withFamily(render::scriptFontFamily(), true)
                                      .withShadow(QColor::fromRgbF(1, 1, 1, 0.5f), {-0.7, 0.9});
    render::drawLetteringCentred(painter, kScriptName, QStringLiteral("Melko"), script);

    painter.save();
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.5f), 0.8));
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(centredRect(QPointF(60, kConnectorY), QSizeF(22, 8)), 2, 2);
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.45f), 0.8));
    for (double x : {60.0 - 27, 60.0 + 27})
        painter.drawRoundedRect(centredRect(QPointF(x, kConnectorY), QSizeF(9, 13)), 1, 1);
    painter.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.6f), 1));
    for (QPointF hole : kMountingHoles)
        painter.drawEllipse(hole, 4.5, 4.5);
    painter.restore();

    render::drawLetteringCentred(painter, kListenOnly, QStringLiteral("LISTEN ONLY"),
                         render::LetteringStyle::of(5.5, QFont::Bold, 0.6, kListenOnlyRed));
}

} // namespace orvan
