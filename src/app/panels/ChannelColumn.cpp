#include "ChannelColumn.h"

#include "Controls.h"
#include "LampColors.h"
#include "OrvanMIDI.h"
#include "PanelItem.h"
#include "PlatePainting.h"
#include "RCUModel.h"
#include "Theme.h"
#include "items/GlossButtonItem.h"
#include "items/LampRowItem.h"
#include "items/ReadoutItem.h"

#include <QPainter>

namespace orvan {

namespace {

constexpr double kReadoutY = 52;
constexpr double kHeadroomY = 138;
constexpr double kSelectLetteringY = 207;
constexpr double kSelectButtonY = 228;
constexpr QSizeF kSelectButton{56, 24};

struct Row {
    double y;
    QString label;
    QColor color;
    std::optional<OrvanSwitch> sw; ///< none: the I/O row, which does nothing
    QString spoken;                ///< "%1" is the channel number
};

const QList<Row>& rowTable()
{
    static const QList<Row> table{
        {104, QStringLiteral("I/O"), LampColors::green, std::nullopt, QStringLiteral("Channel %1 I/O")},
        {121, QStringLiteral("48V"), LampColors::red, OrvanSwitch::phantom, QStringLiteral("Channel %1 48V")},
        {155, QStringLiteral("POL \u00D8"), LampColors::yellow, OrvanSwitch::polarity,
         QStringLiteral("Channel %1 polarity")},
        {172, QStringLiteral("PAD"), LampColors::orange, OrvanSwitch::pad, QStringLiteral("Channel %1 pad")},
        {189, QStringLiteral("MUTE"), LampColors::red, OrvanSwitch::mute, QStringLiteral("Channel %1 mute")},
    };
    return table;
}

LampRowItem::Look rowLook(const QColor& color)
{
    return {.lampSize = 10, .gap = 5, .labelWidth = 46, .color = color,
            .labelStyle = render::engraved(9, QFont::DemiBold, 0.5)};
}

} // namespace

ChannelColumn::ChannelColumn(RCUModel& model, int channel, QGraphicsItem* parent)
    : QGraphicsItem(parent)
{
    setFlag(ItemHasNoContents);
    const QString n = QString::number(channel + 1);
    OrvanMIDI& midi = model.midi();

    m_readout = new ReadoutItem(
        {.scale = 1, .labelColor = render::Theme::engraving()}, DragProfiles::channelReadout,
        [&midi, channel] { return shownGainDecibels(midi.channels().value(channel)); },
        [&model, channel] { return model.selected().contains(channel); },
        [&model, channel](int steps) { model.adjustGain(steps, {channel}); }, this);
    placeControl(m_readout, {0, kReadoutY}, QStringLiteral("Channel %1 gain").arg(n),
                 QStringLiteral("Drag up or down, or scroll, to change channel %1 gain").arg(n));

    for (const Row& row : rowTable()) {
        std::function<bool()> isOn = [] { return false; };
        std::function<void()> action = [] {};
        QString tip;
        if (row.sw) {
            const OrvanSwitch s = *row.sw;
            isOn = [&midi, channel, s] { return midi.channels().value(channel).isOn(s); };
            action = [&model, channel, s] { model.apply(s, {channel}); };
            tip = QStringLiteral("Toggle %1 on channel %2").arg(row.label, n);
        }
        m_rows << placeControl(new LampRowItem(rowLook(row.color), row.label, isOn, action, this), {0, row.y},
                               row.spoken.arg(n), tip);
    }

    m_select = new GlossButtonItem(kSelectButton, [&model, channel] { model.toggleSelect(channel); }, this);
    m_select->setLit([&model, channel] { return model.selected().contains(channel); });
    const QString selectText = QStringLiteral("Select channel %1").arg(n);
    placeControl(m_select, {0, kSelectButtonY}, selectText, selectText);
}

void ChannelColumn::followWith(PanelItem& panel) const
{
    panel.follow(m_readout);
    for (LampRowItem* row : m_rows)
        panel.follow(row);
    panel.follow(m_select);
}

void ChannelColumn::paintStatic(QPainter& painter, render::PaintCache* cache, double centreX)
{
    // HEAD ROOM: three small green lamps that nothing lights, then the label.
    constexpr double lampSize = 6, lampSpacing = 2, gap = 5, labelWidth = 46;
    constexpr double lampsWidth = 3 * lampSize + 2 * lampSpacing;
    const double left = centreX - (lampsWidth + gap + labelWidth) / 2;
    for (int i = 0; i < 3; ++i)
        render::paintLED(painter, cache, QPointF(left + lampSize / 2 + i * (lampSize + lampSpacing), kHeadroomY), lampSize,
                         false, LampColors::green);
    render::drawLettering(painter, QRectF(left + lampsWidth + gap, kHeadroomY - 6, labelWidth, 12),
                  Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("HEAD ROOM"),
                  render::engraved(7, QFont::DemiBold, 0.3));

    render::drawLetteringCentred(painter, QPointF(centreX, kSelectLetteringY), QStringLiteral("SELECT"),
                         render::engraved(8.5, QFont::DemiBold, 0.9));
}

} // namespace orvan
