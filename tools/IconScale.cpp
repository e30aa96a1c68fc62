// Writes smaller copies of the rendered icon for the desktop's icon theme:
//   orvan-icon-scale SOURCE.png OUTDIR SIZE...  ->  OUTDIR/SIZExSIZE.png
#include <QGuiApplication>
#include <QDir>
#include <QImage>
#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::fputs("usage: orvan-icon-scale SOURCE.png OUTDIR SIZE...\n", stderr);
        return 2;
    }
    const QImage source(QString::fromLocal8Bit(argv[1]));
    if (source.isNull()) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    const QDir out(QString::fromLocal8Bit(argv[2]));
    out.mkpath(QStringLiteral("."));
    for (int i = 3; i < argc; ++i) {
        const int size = QString::fromLocal8Bit(argv[i]).toInt();
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
