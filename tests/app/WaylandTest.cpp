// The app as a Wayland client: Qt's own Wayland plugin talking to a real Weston (with_weston.sh),
// seen through the compositor's own screenshots. Wayland.* runs on the headless back end at
// output scale 1 and 2; WaylandInput.* on the X11 back end, whose seat turns X input into real
// Wayland key and pointer events.
#include "AccessRig.h"

#include "OrvanSwitch.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QWindow>
#include <iostream>

using namespace orvan;
using namespace orvan::test;

namespace {

constexpr QRgb kDesktop = 0xff3a5f8a; // with_weston.sh's desktop colour
constexpr int kTolerance = 8;          // per channel, for the compositor's own rounding
constexpr int kCompositorWait = 5000; // ms, for the compositor and the tools it runs

int outputScale()
{
    return std::max(1, qEnvironmentVariableIntValue("ORVAN_WESTON_SCALE"));
}

/// The bounding box of what is not the desktop; rows and columns with only a few such pixels (the
/// pointer's arrow) do not count.
QRect notDesktop(const QImage& shot)
{
    constexpr int kPointerSize = 64;
    std::vector<int> rows(shot.height()), columns(shot.width());
    for (int y = 0; y < shot.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(shot.constScanLine(y));
        for (int x = 0; x < shot.width(); ++x) {
            const bool other = line[x] != kDesktop;
            rows[y] += other;
            columns[x] += other;
        }
    }
    const auto span = [](const std::vector<int>& counts) {
        const auto wide = [](int n) { return n > kPointerSize; };
        const auto first = std::find_if(counts.begin(), counts.end(), wide);
        const auto last = std::find_if(counts.rbegin(), counts.rend(), wide);
        return first == counts.end() ? std::pair(0, -1) : std::pair(int(first - counts.begin()), int(counts.rend() - last) - 1);
    };
    const auto [left, right] = span(columns);
    const auto [top, bottom] = span(rows);
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

/// Runs a tool to its end while this client goes on answering the compositor.
bool run(const QString& tool, const QStringList& arguments, const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStandardPaths::findExecutable(tool), arguments);
    const bool done = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, kCompositorWait);
    return done && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

/// Weston's own picture of its output, in device pixels, taken again until `shows` holds: the
/// compositor shows a frame only after this client has committed it.
QImage compositorScreenshot(const std::function<bool(const QImage&)>& shows)
{
    QImage shot;
    // On a timeout the last screenshot is returned all the same: the caller's checks say what is wrong.
    [[maybe_unused]] const bool shown = QTest::qWaitFor([&] {
        QTemporaryDir folder;
        if (!run(QStringLiteral("weston-screenshooter"), {}, folder.path()))
            return false;
        const QStringList files = QDir(folder.path()).entryList({QStringLiteral("*.png")});
        shot = files.size() == 1 ? QImage(folder.filePath(files.first())).convertToFormat(QImage::Format_RGB32) : QImage();
        return !shot.isNull() && shows(shot);
    }, kCompositorWait);
    return shot;
}

/// The window as the offscreen platform draws it at this scale, rendered by a second run of this
/// program (see main).
QImage offscreenReference()
{
    QTemporaryDir folder;
    QProcess render;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(outputScale()));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), folder.filePath(QStringLiteral("cache")));
    render.setProcessEnvironment(env);
    const QString file = folder.filePath(QStringLiteral("offscreen.png"));
    render.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--offscreen-reference"), file});
    render.waitForFinished(30000);
    return QImage(file).convertToFormat(QImage::Format_RGB32);
}

/// The bounding box of the pixels that differ between two screenshots.
QRect changed(const QImage& before, const QImage& after)
{
    QRect box;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (before.pixel(x, y) != after.pixel(x, y))
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

/// The application shown by the compositor.
struct WaylandRig : AccessRig {
    explicit WaylandRig(QStringList units = {}, bool demo = false) : AccessRig(std::move(units), demo)
    {
        EXPECT_EQ(QGuiApplication::platformName(), "wayland") << "Qt's Wayland plugin, not XWayland";
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window()));
    }
    /// A screenshot once it shows the whole window, and where the window is on it.
    QImage screenshot(QRect* where = nullptr)
    {
        const QSize size = window().size() * outputScale();
        QImage shot = compositorScreenshot([&](const QImage& s) { return notDesktop(s).size() == size; });
        if (where)
            *where = notDesktop(shot);
        return shot;
    }
};

/// Weston's X11 back end, which takes real input, shows its output in an X window at the origin.
void xdotool(const QStringList& arguments)
{
    ASSERT_TRUE(run(QStringLiteral("xdotool"), arguments)) << arguments.join(' ').toStdString();
}

/// Puts the pointer at a point of the output. The back end learns where the pointer is when it
/// enters its window and follows its motion from there, so it first leaves the output (the X
/// screen is larger, see with_weston.sh).
void pointerTo(QPoint at)
{
    xdotool({"mousemove", "1650", "950"});
    xdotool({"mousemove", QString::number(at.x()), QString::number(at.y())});
}

/// Counts the mouse presses that reach a widget.
struct PressCounter : QObject {
    explicit PressCounter(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        presses += event->type() == QEvent::MouseButtonPress;
        return false;
    }
    int presses = 0;
};

} // namespace

// --- Headless, at output scale 1 and 2 -------------------------------------------------------

TEST(Wayland, TheWindowOpensAtItsSizeWhereTheCompositorPutsItAndLooksAsOffscreen)
{
    const QImage reference = offscreenReference();
    ASSERT_EQ(reference.size(), QSize(1298, 468) * outputScale());
    WaylandRig rig({}, true);
    const QWindow* handle = rig.window().windowHandle();
    EXPECT_EQ(handle->size(), QSize(1298, 468));
    EXPECT_EQ(handle->devicePixelRatio(), outputScale());
    EXPECT_EQ(handle->frameMargins(), QMargins()) << "no title bar";
    // A move would only leave Qt believing in a position that is not on the screen.
    EXPECT_FALSE(rig.window().testAttribute(Qt::WA_Moved)) << "the compositor places the window";

    QRect where;
    const QImage shot = rig.screenshot(&where);
    ASSERT_EQ(where.size(), QSize(1298, 468) * outputScale()) << "the window as the compositor shows it";
    const PixelDifference d = difference(shot.copy(where), reference, kTolerance);
    std::cout << "output scale " << outputScale() << ": screenshot against the offscreen render: max channel difference "
              << d.worst << ", " << d.over << " pixels over " << kTolerance << std::endl;
    EXPECT_EQ(d.over, 0);
    if (const QString keep = qEnvironmentVariable("ORVAN_WAYLAND_SHOTS"); !keep.isEmpty()) // to look at by hand
        shot.save(QStringLiteral("%1/wayland-%2x.png").arg(keep).arg(outputScale()));
}

TEST(Wayland, EachDialogIsAModalChildOfTheWindowWithATitleBarAndItsKeys)
{
    struct Case {
        const char* name;
        std::function<QDialog*(WaylandRig&)> open;
        QString title;
        Qt::Key key;
        std::function<bool(WaylandRig&)> asksStill;
    };
    const Case cases[] = {
        {"+48V", [](WaylandRig& r) { return r.orvan().apply(OrvanSwitch::phantom, {1}), r.shell->orvanDialogs().phantomDialog(); },
         QString::fromLatin1(kPhantomTitle), Qt::Key_Return, // the default is Cancel
         [](WaylandRig& r) { return r.orvan().pendingPhantom().has_value(); }},
        {"reset", [](WaylandRig& r) { return r.orvan().powerPressed(), r.shell->orvanDialogs().resetDialog(); },
         DialogTexts::orvan().resetTitle, Qt::Key_Escape, [](WaylandRig& r) { return r.orvan().pendingReset(); }},
        {"save", [](WaylandRig& r) { return r.orvan().beginSave(), r.shell->orvanDialogs().saveDialog(); },
         DialogTexts::orvan().saveTitle, Qt::Key_Escape, [](WaylandRig& r) { return r.orvan().savingPreset(); }},
    };
    WaylandRig rig({"Orvan"});
    const QImage before = rig.screenshot();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QDialog* dialog = c.open(rig);
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
        const QWindow* handle = dialog->windowHandle();
        EXPECT_EQ(handle->transientParent(), rig.window().windowHandle()) << "the compositor keeps it with the window";
        EXPECT_NE(handle->modality(), Qt::NonModal);
        EXPECT_EQ(dialog->windowTitle(), c.title);
        const QMargins frame = handle->frameMargins();
        EXPECT_GT(frame.top(), 16) << "a title bar";
        // The compositor shows the whole dialog, title bar included: nothing of the window covers it.
        const QSize framed = (dialog->size() + QSize(frame.left() + frame.right(), frame.top() + frame.bottom())) * outputScale();
        const QImage shot = compositorScreenshot([&](const QImage& s) { return changed(before, s).size() == framed; });
        EXPECT_EQ(changed(before, shot).size(), framed);
        if (const QString keep = qEnvironmentVariable("ORVAN_WAYLAND_SHOTS"); !keep.isEmpty())
            shot.save(QStringLiteral("%1/wayland-%2x-%3.png").arg(keep).arg(outputScale()).arg(c.name));

        press(*dialog, c.key);
        EXPECT_FALSE(c.asksStill(rig)) << "cancelled";
        EXPECT_TRUE(rig.sent("Orvan").empty());
        EXPECT_TRUE(rig.orvan().presets().isEmpty());
    }
}

// --- Real input through the compositor's seat --------------------------------------------------

TEST(WaylandInput, TabSpaceAndEscapeReachTheWindowAndItsDialogAndCtrlQQuits)
{
    WaylandRig rig({"Orvan"});
    QRect where;
    rig.screenshot(&where);
    pointerTo(QPoint(where.center().x(), where.bottom() - 8));
    // Tab goes Dunra's 24 controls, then the Orvan's POWER; Space presses it: it asks first.
    QStringList tabs(25, QStringLiteral("Tab"));
    xdotool(QStringList{"key", "--delay", "10"} + tabs);
    ASSERT_TRUE(QTest::qWaitFor([&] { return rig.focusPath() == "Orvan/Power"; }, kCompositorWait)) << rig.focusPath().toStdString();
    xdotool({"key", "space"});
    ASSERT_TRUE(QTest::qWaitFor([&] { return rig.shell->orvanDialogs().resetDialog() != nullptr; }, kCompositorWait));
    QMessageBox* dialog = rig.shell->orvanDialogs().resetDialog();
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog->isActiveWindow(); }, kCompositorWait)) << "the dialog takes the keys";
    xdotool({"key", "Escape"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !rig.orvan().pendingReset(); }, kCompositorWait)) << "Escape cancels";
    EXPECT_TRUE(rig.sent("Orvan").empty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.window().isActiveWindow(); }, kCompositorWait)) << "the window has the keys again";

    QTimer::singleShot(0, [] { xdotool({"key", "ctrl+q"}); });
    QTimer::singleShot(kCompositorWait, qApp, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0) << "Ctrl+Q quits";
}

TEST(WaylandInput, OnlyTheTopStripMovesTheWindowAndTheCompositorMovesIt)
{
    WaylandRig rig({}, true);
    QRect start;
    rig.screenshot(&start);
    PressCounter counter(*rig.window().viewport());
    const auto dragBy = [&counter](QPoint from, QPoint travel) {
        pointerTo(from);
        const int pressed = counter.presses;
        xdotool({"mousedown", "1"});
        // The window asks the compositor to move it while the button is down: only then move on.
        ASSERT_TRUE(QTest::qWaitFor([&] { return counter.presses > pressed; }, kCompositorWait));
        for (int step = 1; step <= 4; ++step) { // a compositor's move follows the pointer's motion
            const QPoint at = from + travel * step / 4;
            xdotool({"mousemove", QString::number(at.x()), QString::number(at.y())});
        }
        xdotool({"mouseup", "1"});
    };
    // Window pixels: the backdrop below the plates' left edge, then the strip's middle. The strip's
    // drag goes towards the output's middle, so that the whole window stays in the screenshot.
    dragBy(start.topLeft() + QPoint(8, 400), QPoint(150, -120));
    const QPoint travel(start.center().x() < 800 ? 120 : -120, start.center().y() < 450 ? 160 : -160);
    dragBy(start.topLeft() + QPoint(650, 8), travel);
    QRect moved;
    compositorScreenshot([&](const QImage& s) { return (moved = notDesktop(s)).topLeft() == start.topLeft() + travel; });
    EXPECT_EQ(moved.size(), start.size());
    EXPECT_EQ(moved.topLeft() - start.topLeft(), travel) << "by the strip's drag only";
}

int main(int argc, char** argv)
{
    // The offscreen render to compare with: this program run again on the offscreen platform.
    if (argc == 3 && qstrcmp(argv[1], "--offscreen-reference") == 0) {
        QApplication app(argc, argv);
        const StageRig rig({}, true);
        return rig.windowImage().save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
    }
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
