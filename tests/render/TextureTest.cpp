#include "BrushedTexture.h"
#include "HardLight.h"
#include "SplitMix64.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace orvan::render;

// Values computed independently (arbitrary-precision arithmetic), not with this code: the raw
// sequence, uniform draws from it, and a colour choice taking bit 17 of one output.
TEST(SplitMix64, SeededWithSevenGivesThePublishedSequenceAndDraws)
{
    SplitMix64 rng(7);
    for (std::uint64_t e : {0x63cbe1e459320dd7ull, 0x044c3cd7f43c661cull, 0xe6984080bab12a02ull, 0x953aeb70673e29cbull})
        EXPECT_EQ(rng.next(), e);
    SplitMix64 draws(7);
    EXPECT_DOUBLE_EQ(draws.uniform(0, 0.05), 0.01949148741956358);
    EXPECT_DOUBLE_EQ(draws.uniform(0, 0.05), 0.0008394147264078056);
    EXPECT_DOUBLE_EQ(draws.uniform(0, 0.05), 0.045038034030344176);
    EXPECT_DOUBLE_EQ(draws.uniform(40, 380), 238.19629962954656);
    SplitMix64 a(7), b(7);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(a.drawWhite(), ((b.next() >> 17) & 1u) == 0);
}

namespace {
QImage drawTexture(QSize size, bool vertical)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    BrushedTexture{vertical}.draw(p, size);
    return image;
}
} // namespace

TEST(BrushedTexture, IsTheSameOnEveryDrawing)
{
    for (bool vertical : {false, true}) {
        const QImage first = drawTexture(QSize(300, 120), vertical);
        EXPECT_EQ(first, drawTexture(QSize(300, 120), vertical));
        EXPECT_NE(first, drawTexture(QSize(300, 121), vertical)) << "depends on the frame";
    }
}

TEST(BrushedTexture, IsAFaintTranslucentGrain)
{
    const QImage texture = drawTexture(QSize(1440, 260), false);
    qint64 alphaSum = 0;
    int opaque = 0;
    for (int y = 0; y < texture.height(); ++y) {
        for (int x = 0; x < texture.width(); ++x) {
            alphaSum += qAlpha(texture.pixel(x, y));
            opaque += qAlpha(texture.pixel(x, y)) == 255;
        }
    }
    const double meanAlpha = double(alphaSum) / (1440 * 260);
    EXPECT_GT(meanAlpha, 2) << "there is a grain";
    EXPECT_LT(meanAlpha, 40) << "sheen under 5 % and scratches under 7 % each";
    EXPECT_EQ(opaque, 0);
}

TEST(HardLight, AddsLightOnlyAndLeansItsStreaksDownToTheLeft)
{
    QImage image(400, 200, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(40, 40, 40));
    QPainter p(&image);
    paintHardLight(p, QRectF(0, 0, 400, 200));
    p.end();
    // The brightest streak spans x 352..366 at the top; 1.1 points left per point down.
    const auto brightness = [&](int x, int y) { return qRed(image.pixel(x, y)); };
    EXPECT_GT(brightness(359, 2), 40);
    EXPECT_GT(brightness(359 - 110, 100), 40);
    EXPECT_EQ(brightness(5, 5), 40) << "outside every streak and the glow nothing changes";
}
