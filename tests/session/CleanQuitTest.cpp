#include "CleanQuit.h"
#include "time/ManualClock.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>

namespace orvan::test {
namespace {

using namespace std::chrono_literals;

TEST(CleanQuit, SigtermSigintCtrlQAndClosingTheWindowAllEndTheLoopWithStatusZero)
{
    const struct { const char* name; std::function<void(QWidget&)> ask; } ways[] = {
        {"SIGTERM", [](QWidget&) { std::raise(SIGTERM); }},
        {"SIGINT", [](QWidget&) { std::raise(SIGINT); }},
        {"Ctrl+Q", [](QWidget& w) {
             QApplication::setActiveWindow(&w);
             QTest::keyClick(&w, Qt::Key_Q, Qt::ControlModifier);
         }},
        {"closing the window", [](QWidget& w) { w.close(); }},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.name);
        QWidget window;
        ManualClock clock;
        new CleanQuit(window, clock);
        window.show();
        // the loop ends once the last message had time to leave
        QTimer::singleShot(0, &window, [&] {
            way.ask(window);
            QTimer::singleShot(0, &window, [&] {
                QCoreApplication::processEvents();
                clock.advance(CleanQuit::kLastMessageOut);
            });
        });
        QTimer::singleShot(5000, &window, [] { QCoreApplication::exit(99); }); // only a guard
        EXPECT_EQ(QApplication::exec(), 0);
    }
}

} // namespace
} // namespace orvan::test
