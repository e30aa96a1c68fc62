#include "IconFile.h"
#include "LaunchOptions.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace orvan;

TEST(LaunchOptions, TheIconExportWinsThenHelpOrVersionWhicheverComesFirstAndDemoIsFoundAnywhere)
{
    struct Row { QStringList arguments; LaunchAction action; QString iconPath; bool demo; };
    const Row rows[] = {
        {{"orvanrcu"}, LaunchAction::runApp, {}, false},
        {{"orvanrcu", "--demo"}, LaunchAction::runApp, {}, true},
        {{"--help"}, LaunchAction::runApp, {}, false}, // the program name itself never counts
        {{"--demo"}, LaunchAction::runApp, {}, false},
        {{"orvanrcu", "-h"}, LaunchAction::printHelp, {}, false},
        {{"orvanrcu", "--demo", "--version"}, LaunchAction::printVersion, {}, true},
        {{"orvanrcu", "--version", "--help"}, LaunchAction::printVersion, {}, false},
        {{"orvanrcu", "--help", "--render-icon", "a.png", "--render-icon", "b.png"}, LaunchAction::renderIcon, "a.png", false},
        {{"orvanrcu", "--render-icon", "--demo"}, LaunchAction::renderIcon, "--demo", true}, // whatever follows is the path
        {{"orvanrcu", "--demo", "--render-icon"}, LaunchAction::runApp, {}, true}, // no path: the app starts
        {{"--render-icon", "x.png"}, LaunchAction::runApp, {}, false},
    };
    for (const Row& row : rows) {
        const LaunchOptions options = parseLaunchOptions(row.arguments);
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        EXPECT_EQ(options.action, row.action);
        EXPECT_EQ(options.iconPath, row.iconPath);
        EXPECT_EQ(options.demo, row.demo);
    }
}

TEST(LaunchOptions, UsageListsTheOptionsAndVersionNamesTheRelease)
{
    for (const char* option : {"--demo", "--render-icon PATH", "--version", "--help"})
        EXPECT_TRUE(usageText().contains(option)) << option;
    EXPECT_EQ(versionText(), "OrvanRCU " ORVAN_PROJECT_VERSION "\n");
}

TEST(IconFileDeathTest, AFailedRenderPrintsExactlyItsOneLineAndExitsWithOne)
{
    EXPECT_EXIT(std::exit(IconFile::write("never-written.png", [] { return QImage(); })), testing::ExitedWithCode(1),
                "^icon render failed\n$");
    EXPECT_FALSE(QFile::exists("never-written.png"));
}
