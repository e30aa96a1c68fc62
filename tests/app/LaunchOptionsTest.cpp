#include "AppVersion.h"
#include "LaunchOptions.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(LaunchOptions, HelpAndVersionAreFoundAnywhereAndEverythingElseRunsTheApp)
{
    struct Row {
        QStringList arguments;
        LaunchAction action;
    };
    const Row rows[] = {
        {{"orvanrcu"}, LaunchAction::runApp},
        {{"orvanrcu", "--demo"}, LaunchAction::runApp},
        {{"orvanrcu", "--whatever", "x"}, LaunchAction::runApp},
        {{"--help"}, LaunchAction::runApp}, // the program name itself never counts
        {{"orvanrcu", "--help"}, LaunchAction::printHelp},
        {{"orvanrcu", "--demo", "--version"}, LaunchAction::printVersion},
        {{"orvanrcu", "--version", "--help"}, LaunchAction::printVersion},
    };
    for (const Row& row : rows)
        EXPECT_EQ(launchAction(row.arguments), row.action) << row.arguments.join(' ').toStdString();
}

TEST(LaunchOptions, UsageListsBothLaunchOptions)
{
    EXPECT_TRUE(usageText().contains("--demo"));
    EXPECT_TRUE(usageText().contains("--render-icon PATH"));
}

TEST(LaunchOptions, VersionNamesTheAppAndItsVersion)
{
    EXPECT_EQ(versionText(), "OrvanRCU " + appVersion() + "\n");
    EXPECT_NE(appVersion(), "");
}
