#include "IconView.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace orvan::render;

TEST(Icon, IsA1024SquareWithTransparentCorners)
{
    const QImage icon = IconView::render();
    ASSERT_EQ(icon.size(), QSize(1024, 1024));
    EXPECT_TRUE(icon.hasAlphaChannel());
    for (QPoint corner : {QPoint(0, 0), QPoint(1023, 0), QPoint(0, 1023), QPoint(1023, 1023), QPoint(40, 40)})
        EXPECT_EQ(qAlpha(icon.pixel(corner)), 0) << corner.x() << "," << corner.y();
    EXPECT_EQ(qAlpha(icon.pixel(512, 150)), 255) << "the plate is opaque";
}

TEST(Icon, PlacesTheEightsSegmentBOneDigitPitchRightOfTheOnesWithTheSlant)
{
    const QRectF bOfOne = IconDigits::digitPath(0, QSizeF(600, 400)).toSubpathPolygons()[0].boundingRect();
    const QRectF bOfEight = IconDigits::digitPath(1, QSizeF(600, 400)).toSubpathPolygons()[4].boundingRect();
    EXPECT_NEAR(bOfEight.left() - bOfOne.left(), 194, 1e-9);
    EXPECT_NEAR(bOfEight.top(), bOfOne.top(), 1e-9);
    // b's widest corner (150, 36), slanted and placed: 150 - 0.12 x 36 + 16.2 + (600 - 344) / 2.
    EXPECT_NEAR(bOfOne.right(), 289.88, 1e-9);
}

TEST(Icon, LightsTheSegmentsOfEighteenInItsPaleBlue)
{
    const QImage icon = IconView::render();
    // Lens frame is centred; the digits' frame is moved by (-38, -14).
    const QPointF frameTopLeft(512 - 300 - 38, 512 - 200 - 14);
    const QTransform slant(1, 0, -0.12, 1, 16.2, 0);
    const auto pixelAt = [&](int digit, char segment) {
        const QPointF centre = slant.map(IconDigits::segmentRect(segment).center())
            + QPointF((600 - 344) / 2.0 + 194 * digit, (400 - 270) / 2.0) + frameTopLeft;
        return icon.pixel(centre.toPoint());
    };
    for (char s : QByteArrayLiteral("abcdefg")) {
        const bool litOnOne = s == 'b' || s == 'c';
        EXPECT_EQ(qRed(pixelAt(0, s)) > 150, litOnOne) << "1: " << s;
        EXPECT_GT(qRed(pixelAt(1, s)), 150) << "8: " << s;
    }
}
