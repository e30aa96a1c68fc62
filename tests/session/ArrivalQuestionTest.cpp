#include "StageRig.h"
#include "session/SessionLink.h"

#include <QPushButton>
#include <QTest>

namespace orvan::test {
namespace {

TEST(ArrivalQuestion, AUnitPluggedInLaterIsNamedAndSentItsSessionSettingsOnlyOnSendWithCancelTheDefault)
{
    const QList<ChannelSnapshot> state{ChannelSnapshot{9, true, false, false, false, false}};
    for (const bool send : {false, true}) {
        SCOPED_TRACE(send ? "Send" : "Return, the default");
        // given: a session open for a while without the Dunra (the manager's port is a discard one)
        StageRig rig;
        const auto link = SessionLink::connectTo(QStringLiteral("osc.udp://127.0.0.1:9/"), *rig.app, rig.window(), rig.clock);
        ASSERT_TRUE(link);
        link->recall().open({{QStringLiteral("Dunra"), state}});
        link->recall().scanStarted();
        rig.clock.advance(SessionRecall::kOpeningScan);
        rig.devices[QStringLiteral("Dunra")] = rig.midi->addDevice(QStringLiteral("Dunra"));
        QApplication::processEvents();
        rig.clock.advance(std::chrono::milliseconds(0));
        // a question that names it, and nothing sent yet
        QMessageBox* question = link->arrivalQuestion();
        ASSERT_TRUE(question);
        EXPECT_TRUE(question->text().contains(QStringLiteral("Dunra")));
        EXPECT_TRUE(question->informativeText().contains(QStringLiteral("session settings will be sent")));
        EXPECT_EQ(question->defaultButton()->text(), QStringLiteral("Cancel"));
        rig.clock.runUntilIdle();
        EXPECT_TRUE(rig.sent(QStringLiteral("Dunra")).empty());
        if (send) {
            const auto buttons = question->buttons();
            const auto found = std::ranges::find_if(buttons, [](QAbstractButton* b) { return b->text() == QStringLiteral("Send"); });
            ASSERT_NE(found, buttons.end());
            (*found)->click();
        } else {
            QTest::keyClick(question, Qt::Key_Return);
        }
        QApplication::processEvents();
        rig.clock.runUntilIdle();
        const Sent sent = rig.sent(QStringLiteral("Dunra"));
        EXPECT_EQ(std::ranges::find(sent, std::pair{9, 9}) != sent.end(), send) << "channel 1's gain 9";
        EXPECT_EQ(link->arrivalQuestion(), nullptr);
    }
}

} // namespace
} // namespace orvan::test
