#include "StartupFrame.h"

#include "StaticLayerCache.h"

#include <QDataStream>
#include <QIODevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

namespace orvan {

namespace {

/// The window in device pixels, exactly as a grab of it comes out.
QSize devicePixels(const QWidget& viewport)
{
    return viewport.size() * viewport.devicePixelRatioF();
}

} // namespace

StartupFrame::StartupFrame(QWidget& viewport, Describe describeLook)
    : QObject(&viewport)
    , m_viewport(viewport)
    , m_describe(std::move(describeLook))
{
}

QString StartupFrame::entryName()
{
    return QStringLiteral("StartupFrame");
}

quint64 StartupFrame::keyFor(const QWidget& viewport, const QByteArray& look)
{
    QByteArray description;
    QDataStream out(&description, QIODevice::WriteOnly);
    out << entryName() << devicePixels(viewport) << viewport.devicePixelRatioF() << look;
    return StaticLayerCache::keyFor(description);
}

quint64 StartupFrame::currentKey() const
{
    return keyFor(m_viewport, m_describe());
}

bool StartupFrame::paintFirstFrame()
{
    const quint64 key = currentKey();
    QTimer::singleShot(0, this, [this, key] { settle(key); });
    QPainter painter(&m_viewport);
    // A render of the window into another device (a print, an image at another ratio) is
    // painted as usual: the stored frame is the window's own pixels, so it is not even read.
    const double ratio = m_viewport.devicePixelRatioF();
    if (painter.paintEngine()->paintDevice()->devicePixelRatioF() != ratio)
        return false;
    m_shown = StaticLayerCache::load(entryName(), key, devicePixels(m_viewport));
    if (m_shown.isNull())
        return false; // painted as usual
    m_shown.setDevicePixelRatio(ratio);
    painter.drawImage(QPoint(0, 0), m_shown);
    m_wasShown = true;
    return true;
}

void StartupFrame::settle(quint64 keyAtFirstFrame)
{
    // A real paint of the whole window: the items fill their caches here, not at the first frame.
    QImage fresh = m_viewport.grab().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    fresh.setDevicePixelRatio(m_viewport.devicePixelRatioF());
    const bool sameLook = currentKey() == keyAtFirstFrame;
    // A shown frame that the look has since moved away from is repainted too: it can no longer be
    // checked, and a full repaint now costs only copies of the items' fresh caches.
    if (m_wasShown && (!sameLook || fresh != m_shown)) {
        m_wasRepainted = true;
        m_viewport.repaint(); // at once: never leave a frame on screen that a fresh render would not show
    }
    // Kept only when it shows the look the key names: the look may have moved on since.
    if (sameLook && (!m_wasShown || m_wasRepainted))
        StaticLayerCache::store(entryName(), keyAtFirstFrame, fresh);
    m_shown = QImage();
    m_hasSettled = true;
}

} // namespace orvan
