// Renders each panel control, in each of its looks, to its own PNG at 3x: orvan-gallery OUTDIR
#include "Controls.h"
#include "GainDisplay.h"
#include "Theme.h"

#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <cstdio>
#include <functional>

namespace {
constexpr double kScale = 3;

bool save(const QDir& dir, const QString& name, QSizeF size, const std::function<void(QPainter&)>& paint)
{
    QImage image((size * kScale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(38, 42, 52)); // a dark plate behind the control
    QPainter p(&image);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    p.scale(kScale, kScale);
    paint(p);
    p.end();
    return image.save(dir.filePath(name + QStringLiteral(".png")));
}
} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fputs("usage: orvan-gallery OUTDIR\n", stderr);
        return 2;
    }
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    dir.mkpath(QStringLiteral("."));
    using namespace orvan::render;
    const QColor red = QColor::fromRgbF(1, 0.23f, 0.19f);
    bool ok = true;
    ok &= save(dir, "gloss-button", {80, 50}, [](QPainter& p) { paintGlossButton(p, nullptr, QRectF(17, 12, 46, 26), false); });
    ok &= save(dir, "gloss-button-lit", {80, 50}, [](QPainter& p) { paintGlossButton(p, nullptr, QRectF(17, 12, 46, 26), true); });
    ok &= save(dir, "led-off", {30, 30}, [&](QPainter& p) { paintLED(p, nullptr, QPointF(15, 15), 10, false, red); });
    ok &= save(dir, "led-on", {30, 30}, [&](QPainter& p) { paintLED(p, nullptr, QPointF(15, 15), 10, true, red); });
    ok &= save(dir, "knob", {90, 90}, [](QPainter& p) { paintKnob(p, nullptr, QPointF(45, 45), 0.6); });
    ok &= save(dir, "screw", {30, 30}, [](QPainter& p) { paintScrew(p, nullptr, QPointF(15, 15), 16); });
    ok &= save(dir, "power-connected", {80, 80}, [](QPainter& p) { paintPowerButton(p, nullptr, QPointF(40, 40), true); });
    ok &= save(dir, "power-missing", {80, 80}, [](QPainter& p) { paintPowerButton(p, nullptr, QPointF(40, 40), false); });
    ok &= save(dir, "jack", {60, 60}, [](QPainter& p) { paintJack(p, nullptr, QPointF(30, 30)); });
    for (auto [name, dB, selected] : {std::tuple{"readout-24", std::optional<qint64>(24), false},
                                      std::tuple{"readout-07-selected", std::optional<qint64>(7), true},
                                      std::tuple{"readout-unknown", std::optional<qint64>(), false}}) {
        ok &= save(dir, name, {100, 80}, [&](QPainter& p) {
            paintGainDisplay(p, nullptr, QPointF(50, 40), GainDisplay{dB, selected, true, Theme::engraving()});
        });
    }
    return ok ? 0 : 1;
}
