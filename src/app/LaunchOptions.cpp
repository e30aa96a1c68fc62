#include "LaunchOptions.h"

#include "AppVersion.h"

namespace orvan {

LaunchOptions parseLaunchOptions(const QStringList& arguments)
{
    LaunchOptions options;
    options.demo = arguments.indexOf(QStringLiteral("--demo"), 1) >= 0;

    // An icon export comes before anything else: it never opens a window or a MIDI client.
    const qsizetype icon = arguments.indexOf(QStringLiteral("--render-icon"), 1);
    if (icon >= 0 && icon + 1 < arguments.size()) {
        options.action = LaunchAction::renderIcon;
        options.iconPath = arguments[icon + 1];
        return options;
    }
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--help") || arguments[i] == QLatin1String("-h")) {
            options.action = LaunchAction::printHelp;
            break;
        }
        if (arguments[i] == QLatin1String("--version")) {
            options.action = LaunchAction::printVersion;
            break;
        }
    }
    return options;
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
