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

/// What the window system shows of the window right now, not a fresh render of it.
QImage onScreen(const StageRig& rig)
{
    QApplication::processEvents();
    const QWidget& window = rig.window();
    return window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
}

struct Start {
    const char* look;
    QStringList units;
    bool demo;
};
const Start kStarts[] = {
    {"demo", {}, true},
    {"no unit", {}, false},
    {"the Orvan present", {"Orvan"}, false},
    {"the Dunra present, demo", {"Dunra"}, true},
};

} // namespace

// Each look is started twice over one cache folder: the second start shows the first start's
// frame, and that frame survives the check against a fresh render of the window.
TEST(StartupFrame, ASecondStartWithTheSameLookShowsTheStoredFrameExactly)
{
    for (const Start& start : kStarts) {
        SCOPED_TRACE(start.look);
        CacheFolder cache;
        QImage painted;
        {
            StageRig first(start.units, start.demo);
            EXPECT_FALSE(first.shell->startupFrame().wasShown()) << "nothing was stored yet";
            painted = onScreen(first);
        }
        StageRig second(start.units, start.demo);
        EXPECT_EQ(onScreen(second), painted);
        EXPECT_TRUE(second.shell->startupFrame().wasShown());
    }
}

// One cache folder, the looks one after another: a frame stored for one look is never shown for
// the next, and what is on screen is what that look paints afresh.
TEST(StartupFrame, AFrameIsNeverShownForAnotherLook)
{
    std::vector<QImage> fresh;
    for (const Start& start : kStarts) {
        CacheFolder empty;
        StageRig rig(start.units, start.demo);
        fresh.push_back(onScreen(rig));
    }
    CacheFolder cache;
    for (std::size_t i = 0; i < std::size(kStarts); ++i) {
        SCOPED_TRACE(kStarts[i].look);
        StageRig rig(kStarts[i].units, kStarts[i].demo);
        EXPECT_FALSE(rig.shell->startupFrame().wasShown());
        EXPECT_EQ(onScreen(rig), fresh[i]);
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
    {
        StageRig misled({}, true);
        EXPECT_EQ(onScreen(misled), fresh);
        EXPECT_FALSE(misled.shell->startupFrame().wasShown());
    }
    StageRig next({}, true);
    EXPECT_EQ(onScreen(next), fresh);
    EXPECT_TRUE(next.shell->startupFrame().wasShown()) << "the replaced frame is shown";
}
