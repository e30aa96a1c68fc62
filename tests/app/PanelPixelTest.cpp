#include "StageRig.h"

#include "GainDisplay.h"
#include "SevenSegment.h"
#include "items/LampRowItem.h"
#include "items/ReadoutItem.h"
#include "panels/ChannelColumn.h"
#include "panels/OrvanPanelItem.h"

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

OrvanPanelItem* orvanPanel(StageRig& rig)
{
    for (QGraphicsItem* item : rig.shell->stage().items()) {
        if (auto* panel = dynamic_cast<OrvanPanelItem*>(item))
            return panel;
    }
    return nullptr;
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
