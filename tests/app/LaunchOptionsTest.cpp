#include "LaunchOptions.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(LaunchOptions, HelpAndVersionAreFoundAnywhereAndEverythingElseRunsTheApp)
{
    const std::pair<QStringList, LaunchAction> rows[] = {
        {{"orvanrcu"}, LaunchAction::runApp},
        {{"orvanrcu", "--demo"}, LaunchAction::runApp},
        {{"orvanrcu", "--whatever", "x"}, LaunchAction::runApp},
        {{"--help"}, LaunchAction::runApp}, // the program name itself never counts
        {{"orvanrcu", "--help"}, LaunchAction::printHelp},
        {{"orvanrcu", "--demo", "--version"}, LaunchAction::printVersion},
        {{"orvanrcu", "--version", "--help"}, LaunchAction::printVersion},
    };
    for (const auto& [arguments, action] : rows)
        EXPECT_EQ(launchAction(arguments), action) << arguments.join(' ').toStdString();
}

TEST(LaunchOptions, UsageListsTheOptionsAndVersionNamesTheRelease)
{
    for (const char* option : {"--demo", "--render-icon PATH", "--version", "--help"})
        EXPECT_TRUE(usageText().contains(option)) << option;
    EXPECT_EQ(versionText(), "OrvanRCU " ORVAN_PROJECT_VERSION "\n");
}
