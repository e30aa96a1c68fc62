#pragma once

#include "PanelItem.h"

#include <array>

namespace orvan {

class BrightnessEffect;
class GlossButtonItem;
class KnobItem;
class LampRowItem;
class ReadoutItem;

/// The listen-only unit's narrow light panel (112 x 395). It shows what the unit reports; its
/// controls call the model exactly as the other panels do, and the model refuses them, since the
/// unit's messages are unconfirmed: nothing is ever sent to it.
class MelkoPanelItem final : public PanelItem {
    Q_OBJECT

public:
    explicit MelkoPanelItem(RCUModel& model, std::array<double, 5> buttonY = {112, 146, 180, 214, 248},
                            QGraphicsItem* parent = nullptr);

    ReadoutItem* display() const { return m_display; }
    KnobItem* knob() const { return m_knob; }
    /// Rows in order: HPF, 48V, PØL, PAD, MUTE.
    LampRowItem* lamp(int row) const { return m_lamps[row]; }
    GlossButtonItem* button(int row) const { return m_buttons[row]; }
    QGraphicsItem* listenOnlyLegend() const { return m_legend; }

    static constexpr double kDisconnectedDarkening = 0.35;

protected:
    void paintPlate(QPainter& painter) const override;
    void connectionChanged(bool connected) override;
    bool plateCanBeFlattened() const override;

private:
    std::array<double, 5> m_buttonY;
    ReadoutItem* m_display;
    KnobItem* m_knob;
    std::array<LampRowItem*, 5> m_lamps{};
    std::array<GlossButtonItem*, 5> m_buttons{};
    QGraphicsItem* m_legend;
    BrightnessEffect* m_darkening;
};

} // namespace orvan
