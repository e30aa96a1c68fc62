// The first frame may come from the cache folder instead of being painted: it must then be
// exactly what a fresh render shows, and never stand for another look. This suite also runs at a
// device-pixel ratio of 2 (app_startup_frame_test_2x).
#include "StageRig.h"

#include "StaticLayerCache.h"
#include "stage/StageLook.h"
#include "stage/StartupFrame.h"

#include <QPainter>
#include <QScreen>

using namespace orvan;
using namespace orvan::test;

namespace {

/// A private, empty cache folder for as long as it lives.
struct CacheFolder {
    CacheFolder() { qputenv("XDG_CACHE_HOME", home.path().toLocal8Bit()); }
    ~CacheFolder() { qunsetenv("XDG_CACHE_HOME"); }
    QTemporaryDir home;
};

/// What the window system shows of the window now, not a fresh render of it.
QImage onScreen(const StageRig& rig)
{
    QApplication::processEvents();
    const QWidget& window = rig.window();
    return window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

// One cache folder, each look started twice in a row: the first start of a look finds the last
// look's frame and must not show it; the second shows the first's frame, which a fresh render of
// the window then confirms pixel for pixel.
TEST(StartupFrame, ASecondStartWithTheSameLookShowsTheFirstStartsFrameAndNoOtherLookDoes)
{
    const struct {
        const char* look;
        QStringList units;
        bool demo;
    } starts[] = {
        {"demo", {}, true},
        {"no unit", {}, false},
        {"the Orvan present", {"Orvan"}, false},
        {"the Dunra present, demo", {"Dunra"}, true},
    };
    CacheFolder cache;
    for (const auto& start : starts) {
        SCOPED_TRACE(start.look);
        QImage painted;
        {
            StageRig first(start.units, start.demo);
            painted = onScreen(first);
            EXPECT_FALSE(first.shell->startupFrame().wasShown());
        }
        StageRig second(start.units, start.demo);
        EXPECT_EQ(onScreen(second), painted);
        EXPECT_TRUE(second.shell->startupFrame().wasShown());
        EXPECT_FALSE(second.shell->startupFrame().wasRepainted());
    }
}

// Should a stored frame ever differ from what its look paints (a look the description misses),
// the check after the first frame repaints the window and replaces the stored frame.
TEST(StartupFrame, AFrameThatDiffersFromAFreshRenderIsRepaintedAndReplaced)
{
    CacheFolder cache;
    QImage fresh;
    {
        StageRig first({}, true);
        fresh = onScreen(first);
        QImage wrong = first.window().viewport()->grab().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QPainter(&wrong).fillRect(QRect(QPoint(0, 0), wrong.size() / 2), Qt::red);
        StaticLayerCache::store(StartupFrame::entryName(),
                                StartupFrame::keyFor(*first.window().viewport(), StageLook::describe(*first.app)), wrong);
        StaticLayerCache::writePending();
    }
    for (const bool replaced : {false, true}) {
        StageRig rig({}, true);
        EXPECT_EQ(onScreen(rig), fresh);
        EXPECT_TRUE(rig.shell->startupFrame().wasShown());
        EXPECT_EQ(rig.shell->startupFrame().wasRepainted(), !replaced);
    }
}
