#pragma once

#include "PanelItem.h"

#include <array>

namespace orvan {

class BlueDisplayItem;
class GlossButtonItem;
class KnobItem;
class LampRowItem;
class PowerButtonItem;
class ReadoutItem;

/// Where the stage puts the Dunra's switch columns and its two channel rows.
struct DunraLayout {
    std::array<double, 6> buttonX{500, 577, 651, 728, 805, 882};
    std::array<double, 2> rowLED{24, 108};
    std::array<double, 2> rowDisplay{34, 98};
    QPointF jackLabels{1058, 74}; ///< the centre of the lettering beside the input jacks
};

/// The two-channel unit's front panel (1440 x 132): two channel rows with readouts and switch
/// lamps, the shared buttons acting on the selection, input jacks, the knob (a click cycles the
/// selection) and the preset panel. Its dialogs are shown by the window for this panel's model.
class DunraPanelItem final : public PanelItem {
    Q_OBJECT

public:
    explicit DunraPanelItem(RCUModel& model, DunraLayout layout = DunraLayout(), QGraphicsItem* parent = nullptr);

    PowerButtonItem* powerButton() const { return m_power; }
    ReadoutItem* readout(int channel) const { return m_readouts[channel]; }
    /// The lamp cell of a channel and switch column (0 DI, 1 48V, 2 PØL, 3 PAD, 4 MUTE).
    LampRowItem* cell(int channel, int column) const { return m_cells[channel][column]; }
    /// DI, 48V, PØL, PAD, MUTE, then SELECT / CLEAR / ALL.
    const QList<GlossButtonItem*>& sharedButtons() const { return m_shared; }
    const QList<GlossButtonItem*>& presetButtons() const { return m_presetButtons; }
    BlueDisplayItem* presetDisplay() const { return m_presetName; }
    KnobItem* knob() const { return m_knob; }

protected:
    void paintPlate(QPainter& painter) const override;

private:
    DunraLayout m_layout;
    PowerButtonItem* m_power;
    std::array<ReadoutItem*, 2> m_readouts{};
    std::array<std::array<LampRowItem*, 5>, 2> m_cells{};
    QList<GlossButtonItem*> m_shared;
    QList<GlossButtonItem*> m_presetButtons;
    BlueDisplayItem* m_presetName;
    KnobItem* m_knob;
};

} // namespace orvan
