#include "DunraPanelItem.h"

#include "Controls.h"
#include "LampColors.h"
#include "OrvanMIDI.h"
#include "OrvanPanelItem.h"
#include "PlatePainting.h"
#include "PresetButtons.h"
#include "RCUModel.h"
#include "StageGeometry.h"
#include "Theme.h"
#include "items/BlueDisplayItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/PowerButtonItem.h"
#include "items/ReadoutItem.h"
#include "PaintingScene.h"

#include <QPainter>
#include <algorithm>

namespace orvan {

using render::engraved;

namespace {

constexpr QPointF kPower{100, 58};
constexpr double kPowerScale = 0.7;
constexpr QPointF kPowerLabel{100, 100};
constexpr QPointF kLettering{214, 66};
constexpr int kScriptShadows = 1;
constexpr double kChannelLabelX = 322;
constexpr double kReadoutX = 396;
constexpr double kReadoutScale = 0.82;
constexpr double kHeadroomX = 452;
constexpr QPointF kGainLabel{395, 66};
constexpr double kSharedY = 66;
constexpr QSizeF kSharedButton{46, 24};
constexpr QPointF kJacks[] = {{1000, 50}, {1000, 98}};
constexpr QPointF kKnob{1130, 66};
constexpr double kKnobScale = 0.82;
constexpr QPointF kKnobLabels{1205, 70};
constexpr QPointF kPresetName{1308, 38};
constexpr double kPresetRowY = 82;
constexpr QPointF kRackSlots[] = {{24, 16}, {24, 116}, {1416, 16}, {1416, 116}};
// The right-hand upper screw sits at 26, not 24, as on the unit.
constexpr QPointF kScrews[] = {{56, 24}, {56, 108}, {1396, 26}, {1396, 108}};

struct Cell {
    QString label;
    QColor color;
    OrvanSwitch sw;
    QString spoken;       ///< the lamp's name; "%1" is the channel number
    QString spokenShared; ///< the name of the shared button for this switch
};
const std::array<Cell, 5>& cells()
{
    static const std::array<Cell, 5> table{{
        {QStringLiteral("DI"), LampColors::cyan, OrvanSwitch::di, QStringLiteral("Channel %1 DI"),
         QStringLiteral("DI on selected channels")},
        {QStringLiteral("48V"), LampColors::red, OrvanSwitch::phantom, QStringLiteral("Channel %1 48V"),
         QStringLiteral("48V on selected channels")},
        {QStringLiteral("P\u00D8L"), LampColors::yellow, OrvanSwitch::polarity, QStringLiteral("Channel %1 polarity"),
         QStringLiteral("Polarity on selected channels")},
        {QStringLiteral("PAD"), LampColors::orange, OrvanSwitch::pad, QStringLiteral("Channel %1 pad"),
         QStringLiteral("Pad on selected channels")},
        {QStringLiteral("MUTE"), LampColors::red, OrvanSwitch::mute, QStringLiteral("Channel %1 mute"),
         QStringLiteral("Mute on selected channels")},
    }};
    return table;
}

const render::PlateLook& plateLook()
{
    static const render::PlateLook look{
        .cornerRadius = 4,
        .gradient = {QColor::fromRgbF(0.22f, 0.23f, 0.26f), QColor::fromRgbF(0.09f, 0.095f, 0.11f),
                     QColor::fromRgbF(0.025f, 0.027f, 0.035f)},
        .middleStop = 0.45,
        .verticalGrain = false,
        .textureOpacity = 0.8,
        .lightOpacity = 0.85,
        .border = {QColor::fromRgbF(1, 1, 1, 0.9f), QColor::fromRgbF(1, 1, 1, 0.12f), Qt::transparent,
                   QColor::fromRgbF(0, 0, 0, 0.85f)},
        .borderWidth = 1.6,
        .innerLine = QColor::fromRgbF(0, 0, 0, 0.55f),
        .innerLineWidth = 1,
        .shadowColor = QColor::fromRgbF(0, 0, 0, 0.8f),
        .shadowBlur = 5,
        .shadowOffset = {-7, 8},
    };
    return look;
}

render::LetteringStyle cellLabelStyle()
{
    return engraved(8, QFont::DemiBold, 0.4);
}

} // namespace

DunraPanelItem::DunraPanelItem(RCUModel& model, DunraLayout layout, QGraphicsItem* parent)
    : PanelItem(model, StageGeometry::kDunraPlate, parent)
    , m_layout(layout)
{
    OrvanMIDI& engine = midi();

    m_power = placeControl(follow(new PowerButtonItem(
        [&engine] { return engine.isConnected(); },
        QStringLiteral("Reset both channels: 18 dB, DI, +48V, pad, polarity and mute off"),
        QStringLiteral("Dunra not found. Click to look again."), [&model] { model.powerPressed(); }, this)),
        kPower, QStringLiteral("Power"));
    m_power->setScale(kPowerScale);

    // Always two rows, whatever the unit description says: this is the Dunra's face.
    for (int c = 0; c < 2; ++c) {
        const QString n = QString::number(c + 1);
        auto* readout = follow(new ReadoutItem(
            {.scale = kReadoutScale, .labelColor = render::Theme::engraving()}, DragProfiles::dunraReadout,
            [&engine, c] { return shownGainDecibels(engine.channels().value(c)); },
            [&model, c] { return model.selected().contains(c); },
            [&model, c](int steps) { model.adjustGain(steps, {c}); }, this));
        readout->setOnClick([&model, c] {
            if (model.midi().isConnected())
                model.toggleSelect(c);
        });
        m_readouts[c] = placeControl(
            readout, {kReadoutX, m_layout.rowDisplay[c]}, QStringLiteral("Channel %1 gain").arg(n),
            QStringLiteral("Click to select channel %1. Drag or scroll to change its gain.").arg(n));

        for (int i = 0; i < 5; ++i) {
            const Cell& cell = cells()[i];
            const LampRowItem::Look look{.lampSize = 8, .gap = 4,
                                         .labelWidth = LampRowItem::kFitLabel,
                                         .color = cell.color, .labelStyle = cellLabelStyle()};
            auto* item = follow(new LampRowItem(
                look, cell.label, [&engine, c, s = cell.sw] { return engine.channels().value(c).isOn(s); },
                [&model, c, s = cell.sw] { model.apply(s, {c}); }, this));
            m_cells[c][i] = placeControl(item, {m_layout.buttonX[i], m_layout.rowLED[c]}, cell.spoken.arg(n),
                                         QStringLiteral("Toggle %1 on channel %2").arg(cell.label, n));
        }
    }

    for (int i = 0; i < 6; ++i) {
        std::function<void()> action = i < 5 ? std::function<void()>([&model, s = cells()[i].sw] { model.applyToSelected(s); })
                                             : std::function<void()>([&model] { model.selectAllOrClear(); });
        const QString spoken = i < 5 ? cells()[i].spokenShared : QStringLiteral("Select all or clear");
        auto* button = new GlossButtonItem(kSharedButton, action, this);
        m_shared << placeControl(button, {m_layout.buttonX[i], kSharedY}, spoken);
    }

    m_knob = placeControl(follow(new KnobItem([&model] { return model.knobAngle(); },
                                              [&model](int steps) { model.adjustSelected(steps); }, this)),
                          kKnob, QStringLiteral("Gain knob"),
                          QStringLiteral("Turn or scroll to change gain on the selected channels. "
                                         "Click to cycle channel 1, channel 2, both."));
    m_knob->setOnClick([&model] { model.cycleSelection(); });
    m_knob->setScale(kKnobScale);

    m_presetName = follow(new BlueDisplayItem(
        {.bezel = {146, 28}, .bezelRadius = 4, .pane = {140, 22}, .paneRadius = 3, .textBoxWidth = 130,
         .fontSize = 11, .glassHighlight = false, .blueGlow = false, .shadowDepth = 2},
        [&model] { return QStringList{presetDisplayText(model)}; }, this));
    placeControl(m_presetName, kPresetName, QStringLiteral("Dunra preset"));

    const PresetButtonRow presetRow{.x = {1259, 1289, 1327, 1374}, .width = {26, 26, 38, 46}, .y = kPresetRowY,
                                     .height = 18, .caption = engraved(6, QFont::DemiBold, 0.3)};
    m_presetButtons = makePresetButtons(model, presetRow, this);

    startFollowing();
}

void DunraPanelItem::paintPlate(QPainter& painter) const
{
    const QRectF plate(QPointF(0, 0), plateSize());
    render::paintPlate(painter, PaintingScene::cacheOf(*this), plate, plateLook());

    render::drawLetteringCentred(painter, kLettering + QPointF(0, -22), QStringLiteral("TARVOLD ENGINEERING"),
                         engraved(8.5, QFont::DemiBold, 1.0));
    render::paintScriptName(painter, kLettering + QPointF(0, 0), QStringLiteral("Dunra"), 34, kScriptShadows);
    render::drawLetteringCentred(painter, kLettering + QPointF(0, 22), QStringLiteral("2-CHANNEL PREAMPLIFICATION SYSTEM"),
                         engraved(5.8, QFont::DemiBold, 0.5));
    render::drawLetteringCentred(painter, kPowerLabel, QStringLiteral("POWER"), engraved(6.5, QFont::DemiBold, 1.0));

    for (int c = 0; c < 2; ++c) {
        const double y = m_layout.rowDisplay[c];
        render::drawLetteringCentred(painter, QPointF(kChannelLabelX, y), QStringLiteral("CH %1").arg(c + 1),
                             engraved(8, QFont::DemiBold, 0.8));
        for (int k = -1; k <= 1; ++k)
            render::paintLED(painter, PaintingScene::cacheOf(*this), QPointF(kHeadroomX, y + k * (5 + 4)), 5, false, LampColors::green);
    }
    render::drawLetteringCentred(painter, kGainLabel, QStringLiteral("GAIN (dB)"), engraved(7, QFont::DemiBold, 0.8));

    const double selectX = m_layout.buttonX[5];
    const render::LetteringStyle selectStyle = engraved(7.5, QFont::DemiBold, 0.8);
    render::drawLetteringCentred(painter, QPointF(selectX, 27), QStringLiteral("SELECT"), selectStyle);
    render::drawLetteringCentred(painter, QPointF(selectX, 107), QStringLiteral("CLEAR"), selectStyle);
    render::drawLetteringCentred(painter, QPointF(selectX + 42, 66), QStringLiteral("ALL"), selectStyle);

    for (QPointF jack : kJacks)
        render::paintJack(painter, PaintingScene::cacheOf(*this), jack);
    const render::LetteringStyle jackStyle = engraved(7, QFont::DemiBold, 0.7);
    const QStringList jackLabels{QStringLiteral("CHANNEL 1"), QStringLiteral("DI"), QStringLiteral("CHANNEL 2")};
    const double lineHeight = 7 * 1.2 + 9;
    // A left-aligned stack centred on its point: its widest line decides where all lines start.
    double stackWidth = 0;
    for (const QString& label : jackLabels)
        stackWidth = std::max(stackWidth, render::letteringWidth(label, jackStyle));
    for (int i = 0; i < jackLabels.size(); ++i) {
        const QRectF box(m_layout.jackLabels.x() - stackWidth / 2, m_layout.jackLabels.y() + (i - 1) * lineHeight - 6,
                         stackWidth + 1, 12);
        render::drawLettering(painter, box, Qt::AlignLeft | Qt::AlignVCenter, jackLabels[i], jackStyle);
    }

    const QString knobTop = QStringLiteral("GAIN /"), knobBottom = QStringLiteral("SELECT (PUSH)");
    const render::LetteringStyle knobTopStyle = engraved(7, QFont::DemiBold, 0.8), knobBottomStyle = engraved(6, QFont::DemiBold, 0.5);
    const double knobStackLeft = kKnobLabels.x()
        - std::max(render::letteringWidth(knobTop, knobTopStyle), render::letteringWidth(knobBottom, knobBottomStyle)) / 2;
    render::drawLettering(painter, QRectF(knobStackLeft, kKnobLabels.y() - 11, 80, 11), Qt::AlignLeft | Qt::AlignVCenter, knobTop,
                  knobTopStyle);
    render::drawLettering(painter, QRectF(knobStackLeft, kKnobLabels.y(), 80, 10), Qt::AlignLeft | Qt::AlignVCenter, knobBottom,
                  knobBottomStyle);

    for (QPointF slot : kRackSlots)
        render::paintRackSlot(painter, slot, QSizeF(18, 12), 1.1);
    for (QPointF screw : kScrews)
        render::paintScrew(painter, PaintingScene::cacheOf(*this), screw, 15);
}

} // namespace orvan
