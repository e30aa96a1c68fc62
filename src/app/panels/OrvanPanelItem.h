#pragma once

#include "PanelItem.h"

namespace orvan {

class BlueDisplayItem;
class ChannelColumn;
class GlossButtonItem;
class KnobItem;
class PowerButtonItem;

/// The eight-channel unit's front panel (1440 x 260): POWER, the channel strips, the shared switch
/// block acting on the selection, the status display, the preset panel and the gain knob.
class OrvanPanelItem final : public PanelItem {
    Q_OBJECT

public:
    explicit OrvanPanelItem(RCUModel& model, QGraphicsItem* parent = nullptr);

    PowerButtonItem* powerButton() const { return m_power; }
    const QList<ChannelColumn*>& columns() const { return m_columns; }
    /// In order: I/O, 48V, POLARITY, PAD, MUTE, SELECT ALL / CLEAR.
    const QList<GlossButtonItem*>& sharedButtons() const { return m_shared; }
    /// In order: previous, next, SAVE, RECALL.
    const QList<GlossButtonItem*>& presetButtons() const { return m_presetButtons; }
    BlueDisplayItem* statusDisplay() const { return m_status; }
    BlueDisplayItem* presetDisplay() const { return m_presetName; }
    KnobItem* knob() const { return m_knob; }

    static constexpr double kFirstColumnX = 387;
    static constexpr double kColumnPitch = 75.2;

protected:
    void paintPlate(QPainter& painter) const override;

private:
    PowerButtonItem* m_power;
    QList<ChannelColumn*> m_columns;
    QList<GlossButtonItem*> m_shared;
    QList<GlossButtonItem*> m_presetButtons;
    BlueDisplayItem* m_status;
    BlueDisplayItem* m_presetName;
    KnobItem* m_knob;
};

/// "N name" for the current preset (an absent index counts as 0), else "No presets saved".
QString presetDisplayText(const RCUModel& model);

} // namespace orvan
