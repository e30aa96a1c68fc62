#include "StageWindow.h"

#include "StageGeometry.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <cmath>

namespace orvan {

namespace {
/// A Wayland client never learns or sets where its windows are: the compositor places them, and a
/// move would only leave Qt believing in a position that is not on the screen.
bool windowSystemPlacesWindows()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}
} // namespace

StageWindow::StageWindow(QGraphicsScene* stage, QWidget* parent)
    : QGraphicsView(stage, parent)
{
    setWindowTitle(QStringLiteral("Orvan RCU"));
    setWindowFlag(Qt::FramelessWindowHint);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // No background brush of the view's own: with one, the view would fill it and never ask the
    // stage to draw its backdrop.
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    setViewportUpdateMode(QGraphicsView::MinimalViewportUpdate);
    setOptimizationFlags(QGraphicsView::DontSavePainterState | QGraphicsView::DontAdjustForAntialiasing);
    setSceneRect(QRectF(QPointF(0, 0), StageGeometry::kCanvas));
    scale(StageGeometry::kScale, StageGeometry::kScale);

    const QSize size(int(std::ceil(StageGeometry::kWindow.width())), int(std::ceil(StageGeometry::kWindow.height())));
    setFixedSize(size);
    // Arrow keys work at once, without a click; no focus ring is drawn on a graphics view.
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
}

void StageWindow::centreOnScreen()
{
    if (windowSystemPlacesWindows())
        return;
    if (const QScreen* screen = this->screen())
        move(screen->availableGeometry().center() - rect().center());
}

void StageWindow::keyPressEvent(QKeyEvent* event)
{
    if (m_onArrowStep && (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
        m_onArrowStep(event->key() == Qt::Key_Up ? 1 : -1);
        event->accept();
        return;
    }
    // Taken here rather than as shortcuts: the window is the only widget that takes keys, so the
    // focus is always somewhere in it, and a key press counts whether or not the window system
    // made the window active again after a dialog.
    const QKeyCombination keys = event->keyCombination();
    const std::function<void()>* handler = nullptr;
    if (keys == (Qt::CTRL | Qt::Key_Z))
        handler = &m_onUndo;
    else if (keys == (Qt::CTRL | Qt::SHIFT | Qt::Key_Z) || keys == (Qt::CTRL | Qt::Key_Y))
        handler = &m_onRedo;
    if (handler && *handler) {
        (*handler)();
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

} // namespace orvan
