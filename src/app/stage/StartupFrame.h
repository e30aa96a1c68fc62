#pragma once

#include <QImage>
#include <QObject>
#include <functional>

class QWidget;

namespace orvan {

/// Shows the window's first frame from the user's cache folder when the window last started
/// with the same look, geometry and build, instead of painting every plate, control and
/// reflection before anything is on screen.
///
/// The frame is only ever shown for the look it was painted for (the key holds the description
/// of everything the stage shows). Right after it is shown, the window is painted for real into
/// an image, which also fills every item's own cache for the frames that follow; should that
/// render differ in any pixel, the window is repainted at once and the stored frame replaced.
/// A start without a stored frame paints as usual and stores what it painted.
class StartupFrame final : public QObject {
public:
    using Describe = std::function<QByteArray()>;

    /// For `viewport`'s first frame; `describeLook` tells what the stage shows now.
    StartupFrame(QWidget& viewport, Describe describeLook);

    /// Called from the window's first paint event: paints the stored frame if there is one for
    /// the current look and returns true, else returns false and the window paints as usual.
    /// Either way the check and the storing follow once the frame is on screen.
    bool paintFirstFrame();

    /// True when the first frame came from the cache folder.
    bool wasShown() const { return m_wasShown; }
    /// True when that frame then differed from a fresh render (or the look had moved on before
    /// it could be checked) and was painted over.
    bool wasRepainted() const { return m_wasRepainted; }
    /// True once the window has been rendered for real after its first frame.
    bool hasSettled() const { return m_hasSettled; }

    /// The cache entry's name and key for a look at the viewport's current geometry.
    static QString entryName();
    static quint64 keyFor(const QWidget& viewport, const QByteArray& look);

private:
    quint64 currentKey() const;
    /// Paints the window for real, compares and stores; runs once the first frame is on screen.
    void settle(quint64 keyAtFirstFrame);

    QWidget& m_viewport;
    Describe m_describe;
    QImage m_shown;
    bool m_wasShown = false;
    bool m_wasRepainted = false;
    bool m_hasSettled = false;
};

} // namespace orvan
