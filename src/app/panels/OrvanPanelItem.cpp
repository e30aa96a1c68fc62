#include "OrvanPanelItem.h"

#include "ChannelColumn.h"
#include "Controls.h"
#include "OrvanMIDI.h"
#include "PlatePainting.h"
#include "PresetButtons.h"
#include "RCUModel.h"
#include "StageGeometry.h"
#include "items/BlueDisplayItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/PowerButtonItem.h"
#include "PaintingScene.h"

#include <QPainter>

namespace orvan {

using render::engraved;

namespace {

constexpr QPointF kPower{190, 187};
constexpr QPointF kPowerLabel{238, 214};
constexpr QPointF kLettering{190, 78};
constexpr int kScriptShadows = 2; // the badge's crisp shadow is applied twice
constexpr double kSharedX = 990;
constexpr double kSharedLabelX = 1045;
constexpr double kSharedLabelWidth = 44;
constexpr QSizeF kSharedButton{46, 26};
constexpr double kInertOpacity = 0.55;
constexpr QPointF kStatus{1152, 60};
constexpr QPointF kPresetName{1172, 112};
constexpr double kPresetRowY = 134;
constexpr QPointF kKnob{1155, 189};
constexpr QPointF kGainLabel{1214, 212};
constexpr QPointF kSetupLabel{1222, 222};

struct SharedRow {
    double y;
    QString label;
    std::optional<OrvanSwitch> sw;
    bool selectsAll;
    QString spoken;
};

const QList<SharedRow>& sharedRows()
{
    static const QList<SharedRow> table{
        {48, QStringLiteral("I/O"), std::nullopt, false, QStringLiteral("I/O on selected channels")},
        {83, QStringLiteral("48V"), OrvanSwitch::phantom, false, QStringLiteral("48V on selected channels")},
        {116, QStringLiteral("POLARITY"), OrvanSwitch::polarity, false, QStringLiteral("Polarity on selected channels")},
        {150, QStringLiteral("PAD"), OrvanSwitch::pad, false, QStringLiteral("Pad on selected channels")},
        {184, QStringLiteral("MUTE"), OrvanSwitch::mute, false, QStringLiteral("Mute on selected channels")},
        {217, QStringLiteral("SELECT ALL /\nCLEAR"), std::nullopt, true, QStringLiteral("Select all or clear")},
    };
    return table;
}

const render::PlateLook& plateLook()
{
    static const render::PlateLook look{
        .cornerRadius = 5,
        .gradient = {QColor::fromRgbF(0.30f, 0.34f, 0.43f), QColor::fromRgbF(0.14f, 0.16f, 0.21f),
                     QColor::fromRgbF(0.05f, 0.06f, 0.09f)},
        .middleStop = 0.45,
        .verticalGrain = false,
        .textureOpacity = 1,
        .lightOpacity = 1,
        .border = {QColor::fromRgbF(1, 1, 1, 0.95f), QColor::fromRgbF(1, 1, 1, 0.15f), Qt::transparent,
                   QColor::fromRgbF(0, 0, 0, 0.8f)},
        .borderWidth = 1.8,
        .innerLine = QColor::fromRgbF(0, 0, 0, 0.5f),
        .innerLineWidth = 1,
        .shadowColor = QColor::fromRgbF(0, 0, 0, 0.8f),
        .shadowBlur = 6,
        .shadowOffset = {-8, 10},
    };
    return look;
}

constexpr QPointF kRackSlots[] = {{26, 22}, {26, 238}, {1414, 22}, {1414, 238}};
constexpr QPointF kScrews[] = {{92, 62}, {96, 198}, {1348, 62}, {1344, 198}};

} // namespace

QString presetDisplayText(const RCUModel& model)
{
    const auto preset = model.currentPreset();
    if (!preset)
        return QStringLiteral("No presets saved");
    return QStringLiteral("%1 %2").arg(model.presetIndex().value_or(0) + 1).arg(preset->name);
}

OrvanPanelItem::OrvanPanelItem(RCUModel& model, QGraphicsItem* parent)
    : PanelItem(model, StageGeometry::kOrvanPlate, parent)
{
    OrvanMIDI& engine = midi();

    m_power = placeControl(follow(new PowerButtonItem(
        [&engine] { return engine.isConnected(); },
        QStringLiteral("Reset all channels: 18 dB, +48V, pad, polarity and mute off"),
        QStringLiteral("Orvan not found. Click to look again."), [&model] { model.powerPressed(); }, this)),
        kPower, QStringLiteral("Power"));

    for (int i = 0; i < engine.spec().channelCount; ++i) {
        auto* column = new ChannelColumn(model, i, this);
        column->setPos(kFirstColumnX + kColumnPitch * i, 0);
        column->followWith(*this);
        m_columns << column;
    }

    for (const SharedRow& row : sharedRows()) {
        std::function<void()> action = [] {};
        if (row.sw)
            action = [&model, s = *row.sw] { model.applyToSelected(s); };
        else if (row.selectsAll)
            action = [&model] { model.selectAllOrClear(); };
        const bool inert = !row.sw && !row.selectsAll;
        auto* button = placeControl(new GlossButtonItem(kSharedButton, action, this), {kSharedX, row.y}, row.spoken,
                                    inert ? QStringLiteral("I/O is not mapped yet")
                                          : QStringLiteral("Applies to the selected channels"));
        button->setOpacity(inert ? kInertOpacity : 1.0);
        m_shared << button;
    }

    m_status = follow(new BlueDisplayItem(
        {.bezel = {212, 52}, .bezelRadius = 6, .pane = {204, 44}, .paneRadius = 4, .textBoxWidth = 192,
         .fontSize = 14, .glassHighlight = true, .blueGlow = true, .shadowDepth = 3},
        [&model] {
            const auto [first, second] = model.lcdLines();
            return QStringList{first, second};
        },
        this));
    placeControl(m_status, kStatus, QStringLiteral("Orvan status display"));

    m_presetName = follow(new BlueDisplayItem(
        {.bezel = {176, 30}, .bezelRadius = 5, .pane = {168, 22}, .paneRadius = 3.5, .textBoxWidth = 158,
         .fontSize = 12, .glassHighlight = false, .blueGlow = false, .shadowDepth = 2},
        [&model] { return QStringList{presetDisplayText(model)}; }, this));
    placeControl(m_presetName, kPresetName, QStringLiteral("Orvan preset"));

    const PresetButtonRow presetRow{.x = {1108, 1146, 1188, 1235}, .width = {34, 34, 34, 50}, .y = kPresetRowY,
                                     .height = 20, .caption = engraved(6.5, QFont::DemiBold, 0.4)};
    m_presetButtons = makePresetButtons(model, presetRow, this);

    m_knob = placeControl(follow(new KnobItem([&model] { return model.knobAngle(); },
                                              [&model](int steps) { model.adjustSelected(steps); }, this)),
                          kKnob, QStringLiteral("Gain knob"));

    startFollowing();
}

void OrvanPanelItem::paintPlate(QPainter& painter) const
{
    const QRectF plate(QPointF(0, 0), plateSize());
    render::paintPlate(painter, PaintingScene::cacheOf(*this), plate, plateLook());

    // Maker, unit name in script, and the unit's description.
    const render::LetteringStyle maker = engraved(10, QFont::DemiBold, 1.1);
    const render::LetteringStyle small = engraved(7, QFont::DemiBold, 1.2);
    render::drawLetteringCentred(painter, kLettering + QPointF(0, -33), QStringLiteral("TARVOLD ENGINEERING"), maker);
    render::paintScriptName(painter, kLettering + QPointF(0, -4), QStringLiteral("Orvan"), 40, kScriptShadows);
    render::drawLetteringCentred(painter, kLettering + QPointF(0, 24), QStringLiteral("8-CHANNEL"), small);
    render::drawLetteringCentred(painter, kLettering + QPointF(0, 34), QStringLiteral("REMOTE PRE-AMPLIFICATION SYSTEM"),
                         engraved(7, QFont::DemiBold, 0.9));
    render::drawLetteringCentred(painter, kPowerLabel, QStringLiteral("POWER"), engraved(7, QFont::DemiBold, 1.0));

    for (int i = 0; i < m_columns.size(); ++i)
        ChannelColumn::paintStatic(painter, PaintingScene::cacheOf(*this), kFirstColumnX + kColumnPitch * i);

    const render::LetteringStyle sharedLabel = engraved(6.5, QFont::DemiBold, 0.5);
    for (const SharedRow& row : sharedRows()) {
        const QRectF box(kSharedLabelX - kSharedLabelWidth / 2, row.y - 10, kSharedLabelWidth, 20);
        render::drawLettering(painter, box, Qt::AlignLeft | Qt::AlignVCenter, row.label, sharedLabel);
    }

    render::drawLetteringCentred(painter, kGainLabel, QStringLiteral("GAIN"), engraved(7, QFont::DemiBold, 1.0));
    render::drawLetteringCentred(painter, kSetupLabel, QStringLiteral("SETUP (HOLD)"), engraved(5.5, QFont::Medium, 0.6));

    for (QPointF slot : kRackSlots)
        render::paintRackSlot(painter, slot, QSizeF(18, 13), 1.2);
    for (QPointF screw : kScrews)
        render::paintScrew(painter, PaintingScene::cacheOf(*this), screw, 16);
}

} // namespace orvan
