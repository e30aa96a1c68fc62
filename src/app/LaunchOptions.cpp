#include "LaunchOptions.h"

#include "AppVersion.h"

namespace orvan {

LaunchAction launchAction(const QStringList& arguments)
{
    // The program name comes first and never counts; the first of the two options wins.
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--help") || arguments[i] == QLatin1String("-h"))
            return LaunchAction::printHelp;
        if (arguments[i] == QLatin1String("--version"))
            return LaunchAction::printVersion;
    }
    return LaunchAction::runApp;
}

QString usageText()
{
    return QStringLiteral(
        "Usage: orvanrcu [OPTION]\n"
        "Remote control for Orvan, Dunra and Melko microphone preamplifiers over MIDI.\n"
        "\n"
        "  --demo               start in demo mode: sample settings, nothing is sent\n"
        "  --render-icon PATH   write the 1024 x 1024 application icon as PNG and exit\n"
        "  --version            print the version and exit\n"
        "  --help               print this help and exit\n");
}

QString versionText()
{
    return QStringLiteral("OrvanRCU %1\n").arg(appVersion());
}

} // namespace orvan
