#pragma once

#include "panels/PaintingScene.h"

#include <array>

namespace orvan {

class DemoPillItem;
class DunraPanelItem;
class MelkoPanelItem;
class OrvanPanelItem;
class OrvanRCUApp;
class PanelItem;
class RCUModel;

/// The whole content of the window on a 1622 x 585 canvas: backdrop, the three panels (the Orvan
/// and the Melko with live reflections), the drag strip, the footer and the demo control.
class StageScene final : public PaintingScene {
    Q_OBJECT

public:
    explicit StageScene(OrvanRCUApp& app, QObject* parent = nullptr);

    /// A keyboard gain step: the Orvan's selection if any, else the Dunra's, else the Melko.
    void adjustFocused(int steps);

    /// On (the default), the plates are drawn into the opaque background with the backdrop, so a
    /// frame copies them instead of blending them; off, each is a layer of its own. The Melko's
    /// plate is a layer while its unit is missing: the panel then darkens as a whole.
    void setPlatesInBackground(bool inBackground);

    DemoPillItem* demoPill() const { return m_demoPill; }
    OrvanPanelItem* orvanPanel() const { return m_orvanPanel; }
    DunraPanelItem* dunraPanel() const { return m_dunraPanel; }
    MelkoPanelItem* melkoPanel() const { return m_melkoPanel; }

signals:
    /// What the stage shows may have changed: a panel's unit, channels, selection or presets, or
    /// demo mode. The one signal to follow for everything the window shows and says.
    void lookChanged();

protected:
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    /// The panels in stacking order.
    std::array<PanelItem*, 3> panels() const;

    RCUModel& m_orvan;
    RCUModel& m_dunra;
    RCUModel& m_melko;
    DemoPillItem* m_demoPill = nullptr;
    OrvanPanelItem* m_orvanPanel = nullptr;
    DunraPanelItem* m_dunraPanel = nullptr;
    MelkoPanelItem* m_melkoPanel = nullptr;
};

} // namespace orvan
