#pragma once

#include "PushItem.h"
#include "Refreshable.h"

namespace orvan {

/// The round POWER button. Its ring is green while the unit is connected and red while it is not,
/// and so is its tooltip: reset when connected, look again when not.
class PowerButtonItem final : public PushItem, public Refreshable {
    Q_OBJECT

public:
    static constexpr double kFaceDiameter = 60;

    PowerButtonItem(std::function<bool()> isConnected, QString connectedTip, QString missingTip,
                    std::function<void()> action, QGraphicsItem* parent = nullptr);

    bool refresh() override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

protected:
    QMarginsF paintMargins() const override { return {8, 6, 6, 10}; }

private:
    std::function<bool()> m_isConnected;
    QString m_connectedTip;
    QString m_missingTip;
    bool m_connected = false;
};

} // namespace orvan
