#include "StageRig.h"

#include "items/GlossButtonItem.h"
#include "panels/ChannelColumn.h"
#include "panels/MelkoPanelItem.h"
#include "panels/OrvanPanelItem.h"

#include <QDir>
#include <functional>
#include <map>

using namespace orvan;
using namespace orvan::test;

namespace {

int grey(QRgb c)
{
    return (qRed(c) + qGreen(c) + qBlue(c)) / 3;
}

} // namespace

// --- The real window, as grabbed after show() (this suite also runs at device-pixel ratio 2) ----

// The look is pinned: the demo window, rendered as shown, against the picture kept in
// tests/app/golden at this device-pixel ratio. Painting may be reorganised (other caches, other
// compositing order) but no pixel may move by more than 2 levels in any channel.
// ORVAN_GOLDEN=1 writes the pictures anew, after a deliberate change of the look.
TEST(WindowPixels, TheDemoWindowLooksAsThePictureKeptForItsRatio)
{
    StageRig rig({}, true);
    const QImage now = rig.windowImage().convertToFormat(QImage::Format_RGB32);
    const QString path = QStringLiteral(ORVAN_GOLDEN_DIR "/demo-%1x.png").arg(now.devicePixelRatio());
    ASSERT_TRUE(qEnvironmentVariableIntValue("ORVAN_GOLDEN") != 1 || now.save(path));
    const QImage kept = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(kept.size(), now.size()) << qPrintable(path);
    const PixelDifference d = difference(now, kept, 2);
    EXPECT_LE(d.worst, 2) << d.over << " pixels differ by more than 2 levels from " << qPrintable(path);
}

// A missing unit's plate lies at half opacity over the backdrop; the Melko's is first lowered by
// 0.35 in every channel. Probed on bare metal and on the backdrop just beside the plate. The
// Orvan's metal there is dark (about 30): only a tolerance of the two halves' rounding tells half
// opacity from 0.6.
TEST(WindowPixels, AMissingUnitsPanelIsDimmedAndTheMelkosDarkenedFirst)
{
    StageRig rig;
    const PanelItem* orvan = rig.stage().orvanPanel();
    const PanelItem* melko = rig.stage().melkoPanel();
    const struct {
        const char* unit;
        QPointF bare, beside;
        int lowering;
    } cases[] = {
        {"Orvan", at(orvan, {300, 240}), at(orvan, {-21, 240}), 0},
        {"Melko", at(melko, {100, 305}), at(melko, {melko->plateSize().width() + 18, 305}), 89},
    };
    const QImage absent = rig.windowImage();
    DemoMode::shared().setActive(true); // demo mode shows every plate as present
    const QImage present = rig.windowImage();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.unit);
        const int plate = grey(rig.windowPixel(present, c.bare));
        const int expected = std::max(0, plate - c.lowering) / 2 + grey(rig.windowPixel(absent, c.beside)) / 2;
        EXPECT_NEAR(grey(rig.windowPixel(absent, c.bare)), expected, 2) << "present " << plate;
    }
}

// The look test shows no press: pressed, the face shrinks to 95 % about its centre and loses
// 0.12 of each channel, so a plain spot of it (clear of the rim and the gloss streak) shows what
// lay 1/0.95 further out, 31 levels darker.
TEST(WindowPixels, APressedButtonsFaceShrinksAndDarkens)
{
    StageRig rig({}, /*demo*/ true);
    const GlossButtonItem* button = rig.stage().orvanPanel()->columns()[2]->selectButton();
    const QRectF face = button->buttonFace();
    const QPointF spot(face.center().x() + 0.35 * face.width(), face.center().y() - 0.12 * face.height());
    const QImage released = rig.windowImage();
    rig.hover(at(button));
    rig.press(at(button));
    const QImage pressed = rig.windowImage();

    const int was = grey(rig.windowPixel(released, at(button, face.center() + (spot - face.center()) / 0.95)));
    ASSERT_GT(was, 50) << "a spot bright enough to show the change";
    EXPECT_NEAR(grey(rig.windowPixel(pressed, at(button, spot))), was - 31, 4);
}

// Plates drawn into the background must look as plates as layers of their own, lit or dimmed, also
// after a panel changed between the two once the first frame was shown: rounding may move a
// channel by a level or two; a plate missing, unsmoothed, stale or at the wrong opacity by tens.
TEST(WindowPixels, PlatesInTheBackgroundLookExactlyLikePlatesAsLayers)
{
    // (lit at start, lit once the first frame was shown)
    for (const auto& [litAtStart, litAfter] : {std::pair{true, true}, {false, false}, {false, true}, {true, false}}) {
        SCOPED_TRACE(testing::Message() << "lit at start " << litAtStart << ", after the first frame " << litAfter);
        StageRig rig({}, litAtStart);
        rig.windowImage(); // the first frame, with the start-up look
        DemoMode::shared().setActive(litAfter);
        const QImage flattened = rig.windowImage();
        rig.stage().setPlatesInBackground(false);
        const QImage layered = rig.windowImage();
        ASSERT_EQ(flattened.size(), layered.size());
        EXPECT_LE(difference(flattened, layered, 2).worst, 2);
    }
}

// --- The plate layers, kept on disk between starts --------------------------

namespace {

/// A private, empty cache folder that the rigs given its `path` share.
struct CacheFolder {
    QString path() const { return home.path(); }
    /// Every layer file with its contents.
    std::map<QString, QByteArray> layers() const
    {
        std::map<QString, QByteArray> found;
        const QDir dir(home.filePath(QStringLiteral("OrvanRCU")));
        for (const QString& name : dir.entryList(QDir::Files | QDir::System)) {
            const QFileInfo info(dir.filePath(name));
            QFile file(info.filePath());
            const bool plain = info.isFile() && !info.isSymLink(); // never read a FIFO or a device
            found[info.filePath()] = plain && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("odd");
        }
        return found;
    }
    QTemporaryDir home;
};

/// A fresh start of the app in demo mode, its window as shown, then the zero-time tasks that
/// follow a frame (the cache is written there).
QImage startAndPaint(const CacheFolder& cache)
{
    StageRig rig({}, true, cache.path());
    const QImage image = rig.windowImage();
    QApplication::processEvents();
    return image;
}

} // namespace

// A rig paints into a cache of its own and leaves the environment as it found it, so a later test
// neither finds its layers nor writes into the user's real cache.
TEST(LayerCache, EachRigPaintsIntoItsOwnCacheAndPutsTheEnvironmentBack)
{
    CacheFolder outer;
    const ScopedEnv outerCache("XDG_CACHE_HOME", outer.path());
    {
        StageRig rig({}, true);
        rig.windowImage();
        QApplication::processEvents(); // the task that writes the layers
        EXPECT_FALSE(QDir(rig.ownCacheHome.filePath(QStringLiteral("OrvanRCU"))).isEmpty());
    }
    EXPECT_EQ(qEnvironmentVariable("XDG_CACHE_HOME"), outer.path());
    EXPECT_TRUE(outer.layers().empty());
}

// Whatever lies in the cache, the window shows the fresh render, and the file is put right.
TEST(LayerCache, ADamagedLayerGivesTheFreshRenderAndIsReplaced)
{
    const auto flipByte = [](qint64 at) {
        return [at](const QString& path) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            QByteArray bytes = file.readAll();
            bytes[at < 0 ? bytes.size() / 2 : at] ^= 0x5a;
            file.seek(0);
            file.write(bytes);
        };
    };
    const struct {
        const char* name;
        std::function<void(const QString&)> damage;
    } cases[] = {
        {"short by one byte", [](const QString& path) { QFile(path).resize(QFileInfo(path).size() - 1); }},
        {"another magic", flipByte(0)},
        {"another build's key", flipByte(8)},
        {"another size in the header", flipByte(16)},
        {"a pixel changed", flipByte(-1)},
        {"a FIFO", [](const QString& p) { QFile::remove(p); ASSERT_EQ(::mkfifo(qPrintable(p), 0600), 0); }},
        {"a link to /dev/zero", [](const QString& p) { QFile::remove(p); ASSERT_EQ(::symlink("/dev/zero", qPrintable(p)), 0); }},
    };
    CacheFolder cache;
    const QImage fresh = startAndPaint(cache);
    const std::map<QString, QByteArray> good = cache.layers();
    ASSERT_FALSE(good.empty());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (const auto& [path, bytes] : good)
            c.damage(path);
        EXPECT_EQ(startAndPaint(cache), fresh);
        EXPECT_EQ(cache.layers(), good);
    }
}
