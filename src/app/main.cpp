#include "ApplicationShell.h"
#include "DemoMode.h"
#include "HostMidi.h"
#include "IconFile.h"
#include "LaunchOptions.h"
#include "access/AccessLayer.h"
#include "NsmClient.h"
#include "OrvanRCUApp.h"
#include "SingleInstance.h"
#include "session/SessionLink.h"
#include "stage/StageWindow.h"
#include "time/SystemClock.h"

#include <QApplication>
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
    const orvan::LaunchOptions options = orvan::parseLaunchOptions(argumentList(argc, argv));
    switch (options.action) {
    case orvan::LaunchAction::renderIcon:
        return orvan::IconFile::write(options.iconPath); // before anything else exists
    case orvan::LaunchAction::printHelp:
        std::fputs(orvan::usageText().toLocal8Bit().constData(), stdout);
        return 0;
    case orvan::LaunchAction::printVersion:
        std::fputs(orvan::versionText().toLocal8Bit().constData(), stdout);
        return 0;
    case orvan::LaunchAction::runApp:
        break;
    }

    QApplication application(argc, argv);
    // Before any window exists, so that a screen reader's first look already sees the panels.
    orvan::AccessLayer::installFactory();
    QApplication::setApplicationName(QStringLiteral("OrvanRCU"));
    QApplication::setDesktopFileName(QStringLiteral("org.orvanrcu.orvanrcu"));

    // A session manager owns the launches it makes: those never hand over to a window started
    // outside the session.
    const std::optional<QString> sessionUrl = orvan::NsmClient::urlFromEnvironment();
    orvan::SingleInstance instance(!sessionUrl.has_value());
    if (instance.outcome() == orvan::SingleInstance::Outcome::handedOver)
        return 0;

    // Before the engines subscribe, so that the first of them already starts in demo.
    orvan::DemoMode::shared().setActive(options.demo);
    orvan::SystemClock& time = orvan::SystemClock::shared();
    orvan::OrvanRCUApp app(orvan::createHostMidiSystem(sessionUrl.has_value()), time, time);
    orvan::ApplicationShell shell(app);
    QObject::connect(&instance, &orvan::SingleInstance::raiseRequested, &shell.window(), [&shell] {
        orvan::StageWindow& window = shell.window();
        window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
        window.show();
        window.raise();
        window.activateWindow();
    });
    const auto session = sessionUrl ? orvan::SessionLink::connectTo(*sessionUrl, app, shell.window(), time) : nullptr;
    shell.show();
    if (session)
        session->startMidiWhenOpen(app.midiSystem(), *shell.window().viewport());
    else
        orvan::startHostMidiAfterFirstFrame(app.midiSystem(), *shell.window().viewport());
    return application.exec();
}
