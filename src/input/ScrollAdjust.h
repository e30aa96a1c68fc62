#pragma once

#include "ScrollAccumulator.h"
#include "ScrollRouter.h"

#include <QUuid>
#include <functional>

namespace orvan {

/// Makes one control turnable by the scroll wheel: it owns the wheel while the pointer is over it
/// and turns scroll distance into whole steps with its own accumulator.
class ScrollAdjust {
public:
    using StepSink = std::function<void(int steps)>;

    explicit ScrollAdjust(StepSink onSteps, ScrollRouter& router = ScrollRouter::shared());
    ~ScrollAdjust();
    ScrollAdjust(const ScrollAdjust&) = delete;
    ScrollAdjust& operator=(const ScrollAdjust&) = delete;

    void pointerEntered();
    void pointerLeft();

    const QUuid& id() const { return m_id; }

private:
    StepSink m_onSteps;
    ScrollRouter& m_router;
    QUuid m_id = QUuid::createUuid();
    ScrollAccumulator m_accumulator;
};

} // namespace orvan
