#include "IconRenderer.h"

#include "IconView.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace orvan::IconRenderer {

namespace {
const char kFailure[] = "icon render failed\n";
} // namespace

bool handleLaunchArguments(const QStringList& arguments)
{
    return handleLaunchArguments(arguments, &render::IconView::render);
}

bool handleLaunchArguments(const QStringList& arguments, const std::function<QImage()>& render)
{
    const qsizetype at = arguments.indexOf(QStringLiteral("--render-icon"), 1);
    if (at < 0 || at + 1 >= arguments.size())
        return false;
    const QString path = arguments[at + 1];

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
        std::exit(1);
    }

    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(png); // a failed write is deliberately silent
    return true;
}

} // namespace orvan::IconRenderer
