// The cost of painting each control and a 1440 x 260 plate's texture and shadow, cold (nothing
// cached) and cached, at 1x and 2x.
#include "Blur.h"
#include "BrushedTexture.h"
#include "Controls.h"
#include "GainDisplay.h"
#include "HardLight.h"
#include "PaintCache.h"
#include "RoundedShadow.h"
#include "Theme.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <benchmark/benchmark.h>

using namespace orvan::render;

namespace {

// The stage keeps one for its lifetime; here one for the run, so "cached" means what it says.
PaintCache cache;

QImage target(QSize size, double dpr)
{
    QImage image(size * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(Qt::black);
    return image;
}

template <typename Paint>
void paintLoop(benchmark::State& state, QSize size, Paint paint)
{
    QImage image = target(size, double(state.range(0)));
    for (auto _ : state) {
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        paint(p);
    }
}

void glossButton(benchmark::State& s) { paintLoop(s, {80, 50}, [](QPainter& p) { paintGlossButton(p, &cache, {17, 12, 46, 26}, true); }); }
void led(benchmark::State& s) { paintLoop(s, {30, 30}, [](QPainter& p) { paintLED(p, &cache, {15, 15}, 10, true, Qt::red); }); }
void knob(benchmark::State& s) { paintLoop(s, {90, 90}, [](QPainter& p) { paintKnob(p, &cache, {45, 45}, 0.5); }); }
void screw(benchmark::State& s) { paintLoop(s, {30, 30}, [](QPainter& p) { paintScrew(p, &cache, {15, 15}, 16); }); }
void readout(benchmark::State& s)
{
    paintLoop(s, {100, 80}, [](QPainter& p) { paintGainDisplay(p, &cache, {50, 40}, GainDisplay{42, true, true, Theme::engraving()}); });
}

// Cold: the texture drawn from its generator, as on the first frame at a new size.
void plateTextureCold(benchmark::State& s)
{
    paintLoop(s, {1440, 260}, [](QPainter& p) { BrushedTexture{false}.draw(p, QSizeF(1440, 260)); });
}
// Cached: what every later repaint of the plate costs.
void plateTextureCached(benchmark::State& s)
{
    paintLoop(s, {1440, 260}, [](QPainter& p) { paintBrushedTexture(p, &cache, QRectF(0, 0, 1440, 260), false); });
}
// A reflection's blur: a plate-wide strip of colour, as the reflections blur at every change.
void reflectionBlur(benchmark::State& s)
{
    const double dpr = double(s.range(0));
    QImage strip = target(QSize(1440, 120), dpr);
    for (auto _ : s)
        benchmark::DoNotOptimize(blurred(strip, 0.7 * dpr));
}
// A plate's drop shadow: the whole outline blurred (as before), from nine pieces made afresh (the
// first frame), and from pieces already kept (the reflections' copies, a later ratio change back);
// the pieces skip the middle the plate covers.
const QRectF kPlate(20, 20, 1440, 260);
const QColor kPlateShadow = QColor::fromRgbF(0, 0, 0, 0.8f);
void plateShadowWhole(benchmark::State& s)
{
    QPainterPath outline;
    outline.addRoundedRect(kPlate, 9, 9);
    paintLoop(s, {1480, 300}, [&](QPainter& p) { paintShadow(p, nullptr, outline, kPlateShadow, 6, {-8, 10}); });
}
void plateShadowPieces(benchmark::State& s)
{
    paintLoop(s, {1480, 300}, [](QPainter& p) {
        PaintCache fresh;
        paintRoundedShadow(p, &fresh, kPlate, 9, kPlateShadow, 6, {-8, 10}, kPlate.adjusted(9, 9, -9, -9));
    });
}
void plateShadowPiecesKept(benchmark::State& s)
{
    paintLoop(s, {1480, 300}, [](QPainter& p) {
        paintRoundedShadow(p, &cache, kPlate, 9, kPlateShadow, 6, {-8, 10}, kPlate.adjusted(9, 9, -9, -9));
    });
}
void plateHardLight(benchmark::State& s) { paintLoop(s, {1440, 260}, [](QPainter& p) { paintHardLight(p, {0, 0, 1440, 260}); }); }

BENCHMARK(glossButton)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(led)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(knob)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(screw)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(readout)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(plateTextureCold)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(plateTextureCached)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(reflectionBlur)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(plateShadowWhole)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(plateShadowPieces)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(plateShadowPiecesKept)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(plateHardLight)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv); // fonts
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
