#include "LaunchOptions.h"

#include <QApplication>
#include <QWidget>
#include <cstdio>

namespace {
QStringList argumentList(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}
} // namespace

int main(int argc, char** argv)
{
    const QStringList arguments = argumentList(argc, argv);

    switch (orvan::launchAction(arguments)) {
    case orvan::LaunchAction::printHelp:
        std::fputs(orvan::usageText().toLocal8Bit().constData(), stdout);
        return 0;
    case orvan::LaunchAction::printVersion:
        std::fputs(orvan::versionText().toLocal8Bit().constData(), stdout);
        return 0;
    case orvan::LaunchAction::runApp:
        break;
    }

    QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Orvan RCU"));
    window.setFixedSize(1298, 468);
    window.setStyleSheet(QStringLiteral("background: black"));
    window.show();
    return app.exec();
}
