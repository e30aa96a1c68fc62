#pragma once

#include <QStringList>

namespace orvan {

/// What the command line asks of this process, besides "--render-icon" (handled before anything
/// else) and "--demo" (read by the demo flag). Unknown arguments are ignored.
enum class LaunchAction { runApp, printHelp, printVersion };

LaunchAction launchAction(const QStringList& arguments);

/// The short usage text for "--help".
QString usageText();

/// "OrvanRCU <version>" for "--version".
QString versionText();

} // namespace orvan
