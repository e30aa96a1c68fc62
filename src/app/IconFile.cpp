#include "IconFile.h"

#include "IconView.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <cstdio>
#include <memory>

namespace orvan::IconFile {

namespace {
const char kFailure[] = "icon render failed\n";
constexpr int kRenderFailed = 1;
} // namespace

int write(const QString& path)
{
    return write(path, &render::IconView::render);
}

int write(const QString& path, const std::function<QImage()>& render)
{
    // An export prints nothing but its one failure line: Qt's own chatter (a missing runtime
    // folder, say) stays quiet.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

    // Text needs a GUI application for its fonts; the icon never needs a screen.
    std::unique_ptr<QGuiApplication> app;
    if (!QGuiApplication::instance()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "orvanrcu";
        static char* argv[] = {name, nullptr};
        app = std::make_unique<QGuiApplication>(argc, argv);
    }

    const QImage icon = render();
    QByteArray png;
    if (!icon.isNull()) {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        icon.save(&buffer, "PNG");
    }
    if (png.isEmpty()) {
        std::fwrite(kFailure, 1, sizeof(kFailure) - 1, stderr);
        std::fflush(stderr);
        return kRenderFailed;
    }

    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(png); // a failed write is deliberately silent
    return 0;
}

} // namespace orvan::IconFile
