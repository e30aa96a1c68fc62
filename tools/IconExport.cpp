// Renders the application icon for the desktop's icon theme and the window, at build time:
//   orvan-icon-export OUTDIR SIZE...  ->  OUTDIR/SIZExSIZE.png
// The artwork is drawn at full size and scaled down, so every size shows the same picture.
#include "IconView.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <cstdio>

namespace {
// Up to this size the digits' glow is narrower than a pixel: scaled down it only lightens the
// gaps between the segments and blurs "18" into a blob, so these sizes are drawn without it.
constexpr int kLargestWithoutGlow = 32;
} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: orvan-icon-export OUTDIR SIZE...\n", stderr);
        return 2;
    }
    // Text needs a GUI application for its fonts; a build machine has no screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    const QImage artwork = orvan::render::IconView::render();
    const QImage sharpArtwork = orvan::render::IconView::renderWithDigitGlow(0);
    if (artwork.isNull() || sharpArtwork.isNull()) {
        std::fputs("cannot render the icon\n", stderr);
        return 1;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    out.mkpath(QStringLiteral("."));
    for (int i = 2; i < argc; ++i) {
        bool isNumber = false;
        const int size = QString::fromLocal8Bit(argv[i]).toInt(&isNumber);
        if (!isNumber || size <= 0 || size > artwork.width()) {
            std::fprintf(stderr, "bad icon size: %s\n", argv[i]);
            return 2;
        }
        const QImage& source = size <= kLargestWithoutGlow ? sharpArtwork : artwork;
        const QImage scaled = size == source.width()
            ? source
            : source.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        if (!scaled.save(out.filePath(QStringLiteral("%1x%1.png").arg(size)), "PNG")) {
            std::fprintf(stderr, "cannot write the %d px icon\n", size);
            return 1;
        }
    }
    return 0;
}
