#include "tests/reader/reader_fixture.h"

using support::Peer;
using support::ReaderTest;
using testing::IsEmpty;

TEST_F(ReaderTest, AMessageThatHasComeIsShownHoweverTheServerEndsTheSession) {
    logInWith({support::multipart({support::plainPart("Hello")})});
    loginWindow().POP1.setTimeouts({std::chrono::seconds(20), std::chrono::milliseconds(50)});
    const std::vector<support::Conversation> quits = {
        [](Peer& peer) { peer.holdSilent(); }, [](Peer& peer) { peer.close(); },
        [](Peer& peer) { peer.reset(); }, [](Peer& peer) { peer.send("<html>\r\n"); },
        [](Peer& peer) { peer.send("-ERR stay\r\n"); }};
    for (const support::Conversation& quit : quits) {
        mailbox.on("QUIT", quit);
        doubleClick(1);
        EXPECT_THAT(boxTexts(), IsEmpty());
        ASSERT_TRUE(messageWindow().isVisible());
        EXPECT_EQ(messageWindow().txtSubject->text(), QStringLiteral("Parts"));
        messageWindow().close();
        EXPECT_TRUE(mainWindow().isEnabled());
    }
}

TEST_F(ReaderTest, AWindowThatBecomesActiveWhileAMessageIsOpenedDoesNotOfferExit) {
    logInWith({"Subject: a\r\n\r\ntext\r\n"});
    frmMain& main = mainWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
    main.MailGrid->setFocus();
    main.MailGrid->setEnabled(false);
    QWidget other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    other.close();
    main.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
    EXPECT_FALSE(main.cmdExit->hasFocus());
    main.MailGrid->setEnabled(true);
    EXPECT_TRUE(main.MailGrid->hasFocus());
}
