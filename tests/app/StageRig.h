#pragma once

#include "ApplicationShell.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "OrvanRCUApp.h"
#include "RCUModel.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "stage/StageScene.h"
#include "stage/StageWindow.h"
#include "time/ManualClock.h"

#include <QApplication>
#include <QImage>
#include <QGraphicsItem>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <gtest/gtest.h>
#include <memory>

namespace orvan::test {

/// The whole application on the offscreen platform over a virtual MIDI world, driven with real Qt
/// mouse, wheel and key events sent to the window. Positions are given in stage design points.
class StageRig {
public:
    /// `units` are the units plugged in before start; `demo` starts in demo mode.
    explicit StageRig(QStringList units = {}, bool demo = false)
    {
        // Every rig starts with no preset files of its own.
        qputenv("XDG_DATA_HOME", dataHome.path().toLocal8Bit());
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
    }

    StageWindow& window() const { return shell->window(); }
    QWidget* viewport() const { return window().viewport(); }
    RCUModel& orvan() const { return app->orvanModel(); }
    RCUModel& dunra() const { return app->dunraModel(); }
    RCUModel& melko() const { return app->melkoModel(); }

    QPointF toViewport(QPointF stagePoint) const { return window().mapFromScene(stagePoint); }
    /// Where an item's local point lies on the stage.
    static QPointF at(const QGraphicsItem* item, QPointF local = {}) { return item->mapToScene(local); }

    void press(QPointF stagePoint) { mouse(QEvent::MouseButtonPress, stagePoint, Qt::LeftButton, Qt::LeftButton); }
    void moveHeld(QPointF stagePoint) { mouse(QEvent::MouseMove, stagePoint, Qt::NoButton, Qt::LeftButton); }
    void release(QPointF stagePoint) { mouse(QEvent::MouseButtonRelease, stagePoint, Qt::LeftButton, Qt::NoButton); }
    void click(QPointF stagePoint)
    {
        hover(stagePoint);
        press(stagePoint);
        release(stagePoint);
    }
    /// Moves the pointer without buttons (hover enter and leave follow from it).
    void hover(QPointF stagePoint) { mouse(QEvent::MouseMove, stagePoint, Qt::NoButton, Qt::NoButton); }
    /// A vertical drag in stage points (negative dy is upward), in one move.
    void drag(QPointF from, double dy)
    {
        hover(from);
        press(from);
        moveHeld(from + QPointF(0, dy));
        release(from + QPointF(0, dy));
    }

    /// A notched wheel turned by `lines` (120 eighths of a degree each), over the pointer's place.
    void wheelLines(QPointF stagePoint, double lines)
    {
        hover(stagePoint);
        wheel(stagePoint, QPoint(), QPoint(0, int(std::lround(lines * 120))));
    }
    /// One wheel event of `eighths` of a degree (a notch is 120; many mice split it finely).
    void wheelAngle(QPointF stagePoint, int eighths)
    {
        hover(stagePoint);
        wheel(stagePoint, QPoint(), QPoint(0, eighths));
    }
    /// A trackpad swipe of `points` pixels.
    void wheelPixels(QPointF stagePoint, int points)
    {
        hover(stagePoint);
        wheel(stagePoint, QPoint(0, points), QPoint(0, points));
    }

    /// The window as the user sees it: the view grabbed after show(), at the screen's pixel ratio.
    QImage windowImage() const
    {
        QApplication::processEvents();
        return window().grab().toImage();
    }
    /// The colour at a stage point in such an image.
    QRgb windowPixel(const QImage& image, QPointF stagePoint) const
    {
        const QPointF local = window().viewportTransform().map(stagePoint);
        return image.pixel(int(local.x() * image.devicePixelRatio()), int(local.y() * image.devicePixelRatio()));
    }

    void key(int key)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&window(), &press);
    }

    /// The unit reports a Control Change, as if its front panel was used.
    void report(const QString& unit, int controller, int value)
    {
        midi->injectControlChange(devices.at(unit).source, controller, value);
        QApplication::processEvents();
    }

    std::vector<VirtualMidiSystem::SentMessage> sentTo(const QString& unit) const { return midi->sentTo(unit); }

    QTemporaryDir dataHome;
    ManualClock clock;
    VirtualMidiSystem* midi = nullptr;
    std::map<QString, VirtualMidiSystem::Device> devices;
    std::unique_ptr<OrvanRCUApp> app;
    std::unique_ptr<ApplicationShell> shell;

private:
    void mouse(QEvent::Type type, QPointF stagePoint, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        const QPointF local = toViewport(stagePoint);
        QMouseEvent event(type, local, viewport()->mapToGlobal(local), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &event);
    }
    void wheel(QPointF stagePoint, QPoint pixelDelta, QPoint angleDelta)
    {
        const QPointF local = toViewport(stagePoint);
        QWheelEvent event(local, viewport()->mapToGlobal(local), pixelDelta, angleDelta, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport(), &event);
    }
};

} // namespace orvan::test
