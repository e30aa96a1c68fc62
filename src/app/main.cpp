#include "ApplicationShell.h"
#include "HostMidi.h"
#include "IconRenderer.h"
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
    const QStringList arguments = argumentList(argc, argv);

    // Before anything else exists: an icon export never opens a window or a MIDI client.
    if (orvan::IconRenderer::handleLaunchArguments(arguments))
        return 0;

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
