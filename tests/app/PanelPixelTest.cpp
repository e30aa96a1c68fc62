#include "StageRig.h"

#include "GainDisplay.h"
#include "SevenSegment.h"
#include "items/LampRowItem.h"
#include "items/ReadoutItem.h"
#include "items/GlossButtonItem.h"
#include "panels/ChannelColumn.h"
#include "panels/DunraPanelItem.h"
#include "panels/MelkoPanelItem.h"
#include "panels/OrvanPanelItem.h"
#include "panels/PlatePainting.h"
#include "stage/DemoPillItem.h"

#include <QPainter>

using namespace orvan;
using namespace orvan::test;

namespace {

constexpr double kScale = 2;

/// The whole stage rendered offscreen at twice its design size.
QImage renderStage(StageRig& rig)
{
    QImage image((rig.shell->stage().sceneRect().size() * kScale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    rig.shell->stage().render(&painter);
    return image;
}

QRgb pixel(const QImage& image, QPointF stagePoint)
{
    return image.pixel((stagePoint * kScale).toPoint());
}

template <typename Item = OrvanPanelItem>
Item* find(StageRig& rig)
{
    for (QGraphicsItem* item : rig.shell->stage().items()) {
        if (auto* found = dynamic_cast<Item*>(item))
            return found;
    }
    return nullptr;
}

OrvanPanelItem* orvanPanel(StageRig& rig)
{
    return find<OrvanPanelItem>(rig);
}

int grey(QRgb c)
{
    return (qRed(c) + qGreen(c) + qBlue(c)) / 3;
}

/// The stage point at the middle of a lamp row's lamp.
QPointF lampCentre(const LampRowItem* row)
{
    const QRectF face = row->boundingRect().marginsRemoved({6, 6, 6, 6});
    return row->mapToScene(QPointF(face.left() + 5, face.center().y()));
}

bool isLitRed(QRgb c)
{
    return qRed(c) > 180 && qRed(c) - qGreen(c) > 40;
}

/// Segments lit in one digit of a readout, probed at each segment's middle.
QString litSegments(const QImage& image, const ReadoutItem* readout, int digit)
{
    const QSizeF d = render::GainDisplay::kDigit;
    const double rowWidth = 2 * d.width() + render::GainDisplay::kDigitSpacing;
    const QPointF topLeft(-rowWidth / 2 + digit * (d.width() + render::GainDisplay::kDigitSpacing), -d.height() / 2);
    const render::SevenSegmentDigit geometry{{}, true, true, d.width(), d.height()};
    QString lit;
    for (char s : QByteArrayLiteral("abcdefg")) {
        const QPointF local = geometry.slant().map(geometry.segmentFrame(s).center()) + topLeft;
        if (qRed(pixel(image, readout->mapToScene(local))) > 130)
            lit += QLatin1Char(s);
    }
    return lit;
}

} // namespace

TEST(PanelPixels, TheDemoSampleShowsOnTheRenderedOrvanPanel)
{
    StageRig rig({}, true);
    OrvanPanelItem* panel = orvanPanel(rig);
    const QImage stage = renderStage(rig);

    EXPECT_TRUE(isLitRed(pixel(stage, lampCentre(panel->columns()[1]->rows()[1])))) << "channel 2's 48V lamp";
    EXPECT_TRUE(isLitRed(pixel(stage, lampCentre(panel->columns()[6]->rows()[4])))) << "channel 7's mute lamp";
    EXPECT_FALSE(isLitRed(pixel(stage, lampCentre(panel->columns()[0]->rows()[1])))) << "channel 1's 48V is off";

    // Channel 1 reads 24: "2" lights a b g e d, "4" lights f g b c.
    EXPECT_EQ(litSegments(stage, panel->columns()[0]->readout(), 0), "abdeg");
    EXPECT_EQ(litSegments(stage, panel->columns()[0]->readout(), 1), "bcfg");
}

TEST(PanelPixels, AMissingUnitsPanelIsDrawnAtHalfOpacity)
{
    StageRig demo({}, true);
    const QPointF plateSpot = StageRig::at(orvanPanel(demo), QPointF(300, 240)); // bare brushed metal
    const QImage lit = renderStage(demo);
    const int connected = qRed(pixel(lit, plateSpot)) + qGreen(pixel(lit, plateSpot));
    demo.shell.reset();
    demo.app.reset();

    StageRig missing;
    const QImage stage = renderStage(missing);
    const int dimmed = qRed(pixel(stage, plateSpot)) + qGreen(pixel(stage, plateSpot));
    EXPECT_LT(dimmed, connected * 0.75);
    EXPECT_GT(dimmed, 0);
}

// --- The real window, as grabbed after show() (this suite also runs at device-pixel ratio 2) ----

TEST(WindowPixels, TheBackdropFadesToBlackWithACoolGlowFromTheTopRight)
{
    StageRig rig;
    const QImage window = rig.windowImage();
    // Top: white 0.045 under the glow's (0.35, 0.40, 0.55) at 0.28; bottom left: black, out of reach.
    const QRgb topRight = rig.windowPixel(window, QPointF(1620, 1));
    EXPECT_NEAR(qRed(topRight), 33, 4);
    EXPECT_NEAR(qGreen(topRight), 37, 4);
    EXPECT_NEAR(qBlue(topRight), 47, 4);
    const QRgb bottomLeft = rig.windowPixel(window, QPointF(2, 583));
    EXPECT_LE(grey(bottomLeft), 2);
}

TEST(WindowPixels, ALitSelectButtonGlowsBlueOverItsBlackBezel)
{
    StageRig rig({}, /*demo*/ true);
    OrvanPanelItem* panel = orvanPanel(rig);
    rig.orvan().toggleSelect(0);
    ASSERT_TRUE(panel->columns()[0]->selectButton()->isLit());
    const QImage lit = rig.windowImage();
    rig.orvan().toggleSelect(0);
    ASSERT_FALSE(panel->columns()[0]->selectButton()->isLit());
    const QImage unlit = rig.windowImage();

    // The bezel's middle above the face, and the ring just inside the face's top edge.
    const GlossButtonItem* button = panel->columns()[0]->selectButton();
    const QRectF face = button->buttonFace();
    const QPointF bezel = StageRig::at(button, QPointF(face.center().x(), face.top() - 1.25));
    const QPointF ring = StageRig::at(button, QPointF(face.center().x(), face.top() + 0.8));
    EXPECT_GT(qBlue(rig.windowPixel(lit, bezel)), qBlue(rig.windowPixel(unlit, bezel)) + 15)
        << "the glow lies on top of the black bezel";
    const QRgb ringColour = rig.windowPixel(lit, ring);
    EXPECT_GT(qBlue(ringColour), 170);
    EXPECT_GT(qBlue(ringColour) - qRed(ringColour), 70);
}

TEST(WindowPixels, AMissingMelkoIsDarkenedThenHalfTransparent)
{
    const QPointF bare(1486 + 100, 24 + 305); // plain plate right of the knob
    const QPointF beside(1486 + 130, 24 + 305); // the backdrop next to the plate
    StageRig demo({}, true);
    const QImage present = demo.windowImage();
    demo.shell.reset();
    demo.app.reset();

    StageRig missing;
    const QImage absent = missing.windowImage();
    const int plate = grey(missing.windowPixel(present, bare));
    const int backdrop = grey(missing.windowPixel(absent, beside));
    // Each channel lowered by 0.35, then laid at half opacity over the backdrop.
    const int expected = std::max(0, plate - 89) / 2 + backdrop / 2;
    EXPECT_NEAR(grey(missing.windowPixel(absent, bare)), expected, 6) << "present " << plate;
}

TEST(WindowPixels, ThePillsGlowFallsOffSmoothly)
{
    StageRig rig({}, /*demo*/ true);
    const QImage window = rig.windowImage();
    const DemoPillItem* pill = find<DemoPillItem>(rig);
    const double dpr = window.devicePixelRatio();
    // Straight up from the pill's top edge (its drop shadow falls the other way), pixel by pixel.
    const QPointF top = StageRig::at(pill, QPointF(0, -DemoPillItem::kPillSize.height() / 2));
    const QPointF start = rig.window().viewportTransform().map(top) * dpr;
    std::vector<int> green;
    for (int dy = 2; dy < int(30 * dpr); ++dy)
        green.push_back(qGreen(window.pixel(int(start.x()), int(start.y()) - dy)));
    EXPECT_GT(green.front() - green.back(), 60) << "there is a glow";
    for (std::size_t i = 1; i < green.size(); ++i) {
        EXPECT_LE(green[i], green[i - 1] + 1) << "never brighter further out, at " << i;
        EXPECT_LE(green[i - 1] - green[i], 12) << "no band edge, at " << i;
    }
}

TEST(WindowPixels, APressedButtonsFaceLosesTwelveHundredthsOfEachChannel)
{
    StageRig rig({}, /*demo*/ true);
    const GlossButtonItem* button = orvanPanel(rig)->columns()[2]->selectButton();
    const QRectF face = button->buttonFace();
    // A plain spot of the face's gradient, clear of the rim and the gloss streak.
    const QPointF spot(face.center().x() + 0.35 * face.width(), face.center().y() - 0.12 * face.height());
    const QImage released = rig.windowImage();

    rig.hover(StageRig::at(button));
    rig.press(StageRig::at(button));
    const QImage pressed = rig.windowImage();
    rig.release(StageRig::at(button));

    // Pressed, the face shrinks to 95 % about its centre: the spot shows what lay 1/0.95 further out.
    const QPointF before = face.center() + (spot - face.center()) / 0.95;
    const int was = grey(rig.windowPixel(released, StageRig::at(button, before)));
    ASSERT_GT(was, 50) << "a spot bright enough to show the change";
    EXPECT_NEAR(grey(rig.windowPixel(pressed, StageRig::at(button, spot))), was - 31, 4);
}

TEST(WindowPixels, TheDunraJackLabelsStandCentredOnTheirPoint)
{
    StageRig rig;
    const QImage window = rig.windowImage();
    const QPointF plate = StageRig::at(find<DunraPanelItem>(rig));
    // The lettering is the only light ink between the jacks and the knob.
    double left = 1e9, right = -1e9;
    for (double y = 74 - 20; y <= 74 + 20; y += 0.5) {
        for (double x = 1025; x <= 1098; x += 0.25) {
            if (grey(rig.windowPixel(window, plate + QPointF(x, y))) > 80) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
        }
    }
    ASSERT_LT(left, right);
    EXPECT_NEAR((left + right) / 2, 1058, 1.5);
}

TEST(ScriptName, EachShadowLiesOneOffsetFurtherOut)
{
    const auto darkPixels = [](int shadows) {
        QImage image(200, 80, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.scale(kScale, kScale);
        PlatePainting::paintScriptName(painter, QPointF(50, 20), QStringLiteral("Orvan"), 40, shadows);
        painter.end();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                dark += qRed(image.pixel(x, y)) < 40;
        return dark;
    };
    EXPECT_GT(darkPixels(2), darkPixels(1) * 1.5) << "the second shadow shows beside the first";
}

namespace {

/// The window painted into an image at `ratio` device pixels per window point.
QImage renderWindow(StageRig& rig, double ratio)
{
    QImage image(rig.window().size() * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    QPainter painter(&image);
    static_cast<QWidget&>(rig.window()).render(&painter);
    return image;
}

/// How many pixels differ, and by how much at most in one channel.
struct Difference {
    int pixels = 0;
    int largest = 0;
};

Difference compare(const QImage& a, const QImage& b)
{
    Difference d;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int channel = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                          std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
            if (channel > 0)
                ++d.pixels;
            d.largest = std::max(d.largest, channel);
        }
    }
    return d;
}

} // namespace

// Drawing the plates into the background is only a faster way of showing the same thing: the
// window must look as it does with every plate a layer of its own, lit or dimmed, at 1x and 2x,
// and after a panel changed between dimmed and lit once the first frame was shown. Laying the
// plate over the backdrop inside the background instead of over a copy of it may round a
// channel by a level or two; a plate missing, unsmoothed, stale or at the wrong opacity is off
// by tens of levels.
TEST(PanelPixels, PlatesInTheBackgroundLookExactlyLikePlatesAsLayers)
{
    struct Case {
        const char* name;
        bool demoAtStart;
        bool demoAfterFirstFrame;
        double ratio;
    };
    const Case cases[] = {
        {"all lit, 1x", true, true, 1},
        {"all lit, 2x", true, true, 2},
        {"all dimmed, 2x", false, false, 2},
        {"lit after the first frame, 2x", false, true, 2},
        {"dimmed after the first frame, 1x", true, false, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        StageRig rig({}, c.demoAtStart);
        StageScene& stage = rig.shell->stage();
        renderWindow(rig, c.ratio); // the first frame, with the start-up look
        DemoMode::shared().setActive(c.demoAfterFirstFrame);
        QApplication::processEvents();
        const QImage flattened = renderWindow(rig, c.ratio);

        stage.setPlatesInBackground(false);
        const QImage layered = renderWindow(rig, c.ratio);
        stage.setPlatesInBackground(true);

        const Difference d = compare(flattened, layered);
        constexpr int kRounding = 2;
        EXPECT_LE(d.largest, kRounding) << d.pixels << " pixels differ";
    }
}
