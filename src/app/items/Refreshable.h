#pragma once

#include <QGraphicsItem>

namespace orvan {

/// A panel element that draws what its unit's engine and model say. Panels call refresh() when
/// either publishes a change; the element repaints only if what it shows has changed.
class Refreshable {
public:
    virtual ~Refreshable() = default;
    /// Returns true when the element's look changed (and it scheduled its repaint).
    virtual bool refresh() = 0;

protected:
    /// Keeps `value` as what `item` shows and repaints it, when it differs from `shown`.
    template <typename T>
    static bool repaintIfChanged(QGraphicsItem& item, T& shown, T value)
    {
        if (value == shown)
            return false;
        shown = std::move(value);
        item.update();
        return true;
    }
};

} // namespace orvan
