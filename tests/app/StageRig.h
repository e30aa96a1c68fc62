#pragma once

#include "ApplicationShell.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "OrvanRCUApp.h"
#include "RCUModel.h"
#include "StaticLayerCache.h"
#include "dialogs/ConfirmationDialogs.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "stage/StageScene.h"
#include "stage/StageWindow.h"
#include "time/ManualClock.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QGraphicsItem>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <algorithm>
#include <optional>
#include <gtest/gtest.h>

namespace orvan::test {

using Sent = std::vector<std::pair<int, int>>;

/// Where an item's local point lies on the stage.
inline QPointF at(const QGraphicsItem* item, QPointF local = {})
{
    return item->mapToScene(local);
}

/// How far two pictures are apart: the largest difference in any colour channel of any pixel,
/// and how many pixels are off by more than `tolerance`.
struct PixelDifference {
    int worst = 0;
    int over = 0;
};
inline PixelDifference difference(const QImage& a, const QImage& b, int tolerance)
{
    PixelDifference d;
    for (int y = 0; y < std::min(a.height(), b.height()); ++y) {
        for (int x = 0; x < std::min(a.width(), b.width()); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int off = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
            d.worst = std::max(d.worst, off);
            d.over += off > tolerance;
        }
    }
    return d;
}

/// Sets an environment variable for as long as it lives, then puts back what was there before (a
/// variable that was not set is unset again), so no later test of the process inherits it.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const QString& value) : m_name(name)
    {
        if (qEnvironmentVariableIsSet(name))
            m_was = qgetenv(name);
        qputenv(name, QFile::encodeName(value));
    }
    ~ScopedEnv() { m_was ? qputenv(m_name, *m_was) : qunsetenv(m_name); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* m_name;
    std::optional<QByteArray> m_was;
};

/// The whole application on the offscreen platform over a virtual MIDI world, driven with real Qt
/// mouse, wheel and key events sent to the window. Positions are given in stage design points.
class StageRig {
public:
    /// `units` are the units plugged in before start; `demo` starts in demo mode. Every rig starts
    /// with no preset files and, unless it is given `cacheHome` to share with other rigs, an empty
    /// cache of painted layers: what a test sees never depends on the tests run before it.
    explicit StageRig(QStringList units = {}, bool demo = false, const QString& cacheHome = {})
        : dataEnv("XDG_DATA_HOME", dataHome.path())
        , cacheEnv("XDG_CACHE_HOME", cacheHome.isEmpty() ? ownCacheHome.path() : cacheHome)
    {
        DemoMode::shared().setActive(demo);
        auto system = std::make_unique<VirtualMidiSystem>(&clock);
        midi = system.get();
        for (const QString& unit : units)
            devices[unit] = midi->addDevice(unit);
        app = std::make_unique<OrvanRCUApp>(std::move(system), clock, clock);
        shell = std::make_unique<ApplicationShell>(*app);
        shell->show();
        QApplication::processEvents();
    }
    ~StageRig()
    {
        shell.reset();
        app.reset();
        DemoMode::shared().setActive(false);
        // Layers still waiting to be written go to this rig's cache, not to the next one's.
        StaticLayerCache::writePending();
    }

    StageWindow& window() const { return shell->window(); }
    StageScene& stage() const { return shell->stage(); }
    RCUModel& orvan() const { return app->orvanModel(); }
    RCUModel& dunra() const { return app->dunraModel(); }
    RCUModel& melko() const { return app->melkoModel(); }

    // Mouse and wheel events at stage points; the pointer moves there first, without buttons.
    void press(QPointF p) { mouse(QEvent::MouseButtonPress, p, Qt::LeftButton, Qt::LeftButton); }
    void moveHeld(QPointF p) { mouse(QEvent::MouseMove, p, Qt::NoButton, Qt::LeftButton); }
    void release(QPointF p) { mouse(QEvent::MouseButtonRelease, p, Qt::LeftButton, Qt::NoButton); }
    void hover(QPointF p) { mouse(QEvent::MouseMove, p, Qt::NoButton, Qt::NoButton); }
    void click(QPointF p) { drag(p, 0); }
    /// A press, one vertical move by `dy` stage points (negative is upward) unless 0, and a release.
    void drag(QPointF from, double dy)
    {
        hover(from);
        press(from);
        if (dy != 0)
            moveHeld(from + QPointF(0, dy));
        release(from + QPointF(0, dy));
    }
    /// One wheel event of `eighths` of a degree (a notch is 120; many mice split it finely).
    void wheel(QPointF p, int eighths) { wheelEvent(p, QPoint(), QPoint(0, eighths)); }
    void swipe(QPointF p, int points) { wheelEvent(p, QPoint(0, points), QPoint(0, points)); }
    void key(int key)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&window(), &press);
    }

    /// The window as the user sees it: the view grabbed after show(), at the screen's pixel ratio.
    QImage windowImage() const { return QApplication::processEvents(), window().grab().toImage(); }
    /// The colour at a stage point in such an image.
    QRgb windowPixel(const QImage& image, QPointF stagePoint) const
    {
        const QPointF local = window().viewportTransform().map(stagePoint);
        return image.pixel(int(local.x() * image.devicePixelRatio()), int(local.y() * image.devicePixelRatio()));
    }

    /// The unit reports a Control Change, as if its front panel was used.
    void report(const QString& unit, int controller, int value)
    {
        midi->injectControlChange(devices.at(unit).source, controller, value);
        QApplication::processEvents();
    }
    Sent sent(const QString& unit) const // (controller, value) pairs
    {
        Sent messages;
        for (const auto& m : midi->sentTo(unit))
            messages.emplace_back(m.controller(), m.value());
        return messages;
    }
    /// Clicks the dialog's button labelled `text`.
    static void answer(QMessageBox* box, const QString& text)
    {
        ASSERT_NE(box, nullptr);
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == text)
                button->click();
        }
        QApplication::processEvents();
    }

    QTemporaryDir dataHome;
    QTemporaryDir ownCacheHome;
    ScopedEnv dataEnv;
    ScopedEnv cacheEnv;
    ManualClock clock;
    VirtualMidiSystem* midi = nullptr;
    std::map<QString, VirtualMidiSystem::Device> devices;
    std::unique_ptr<OrvanRCUApp> app;
    std::unique_ptr<ApplicationShell> shell;

private:
    void mouse(QEvent::Type type, QPointF p, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        const QPointF local = window().mapFromScene(p);
        QMouseEvent event(type, local, window().viewport()->mapToGlobal(local), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(window().viewport(), &event);
    }
    void wheelEvent(QPointF p, QPoint pixelDelta, QPoint angleDelta)
    {
        hover(p);
        const QPointF local = window().mapFromScene(p);
        QWheelEvent event(local, window().viewport()->mapToGlobal(local), pixelDelta, angleDelta, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(window().viewport(), &event);
    }
};

} // namespace orvan::test
