#pragma once

#include <QString>
#include <QStringList>

namespace orvan {

/// What this process is to do; `main` acts on it.
enum class LaunchAction { runApp, printHelp, printVersion, renderIcon };

/// The command line, read once. The program name comes first and never counts; unknown arguments
/// are ignored.
struct LaunchOptions {
    /// "--render-icon PATH" (its first occurrence, when a path follows) wins over everything; else
    /// the first of "--help" ("-h") and "--version"; else the app runs.
    LaunchAction action = LaunchAction::runApp;
    QString iconPath;  ///< where `renderIcon` writes the PNG
    bool demo = false; ///< "--demo": the demo flag starts on
};

LaunchOptions parseLaunchOptions(const QStringList& arguments);

/// The short usage text for "--help".
QString usageText();

/// "OrvanRCU <version>" for "--version".
QString versionText();

} // namespace orvan
