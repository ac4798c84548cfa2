// The window that finds addresses is closed, or goes with others; what it searches by itself.

#include "email/mailbox.h"
#include "platform/program.h"
#include "tests/compose/find_fixture.h"

#include <QPointer>

#include <filesystem>

using support::eventsRunUntil;
using support::kAnn;
using support::SendTest;
using support::text;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
class CloseFinding : public support::FindTest {};

/** The same with the program's own sources. */
class FindInOwnSources : public SendTest {
  protected:
    FindInOwnSources() {
        composeWindow().cmdSendto->show();
        email::mailbox.Senders = {"Ann Smith <ann@example.net>", "\"Miller, Bob\" <bob@example.net>"};
    }

    /** Opens the window and waits for what everybody comes to. */
    static QStringList everybody() {
        composeWindow().cmdSendto->click();
        EXPECT_TRUE(eventsRunUntil([] { return findWindow().lblFinding->text() != text("Searching..."); }));
        QStringList rows;
        for (int row = 1; row < findWindow().lstFound->Rows(); ++row) {
            rows.append(findWindow().lstFound->TextMatrix(row, 1));
        }
        return rows;
    }
};
} // namespace

TEST_F(CloseFinding, ClosedItGivesTheKeyboardToTheFieldWithTheCaretAtItsEnd) {
    composeWindow().tSubject->setFocus();
    openWith({kAnn});
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    EXPECT_TRUE(composeWindow().isEnabled());
    EXPECT_TRUE(composeWindow().tTo->hasFocus());
    EXPECT_EQ(composeWindow().tTo->cursorPosition(), to().size());
    EXPECT_FALSE(composeWindow().tTo->hasSelectedText());
    EXPECT_FALSE(mainWindow().isEnabled());
}

TEST_F(CloseFinding, OpenedAgainItBeginsAnew) {
    openWith({kAnn});
    type(text("ann"));
    findWindow().close();
    open();
    EXPECT_EQ(findWindow().txtFind->text(), QString());
    EXPECT_EQ(findWindow().lstFound->Rows(), 1);
    EXPECT_EQ(source.sources, 2);
    EXPECT_EQ(source.asked.back(), "");
}

TEST_F(CloseFinding, ClosedWhileASearchRunsItGivesItUp) {
    open();
    const QPointer<QWidget> window = &findWindow();
    findWindow().cmdClose->click();
    EXPECT_FALSE(source.isAsked());
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
    EXPECT_TRUE(composeWindow().isEnabled());
}

TEST_F(CloseFinding, ClosedInThePauseBeforeASearchItAsksNobody) {
    open();
    type(text("ann"));
    const QPointer<QWidget> window = &findWindow();
    findWindow().close();
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
    EXPECT_THAT(source.asked, SizeIs(1));
}

TEST_F(CloseFinding, AComposeWindowThatClosesTakesItAlong) {
    open();
    const QPointer<QWidget> window = &findWindow();
    unload(composeWindow());
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(source.isAsked());
    EXPECT_TRUE(mainWindow().isEnabled());
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
}

TEST_F(CloseFinding, TheComposeWindowCannotBeClosedByItsFrameMeanwhile) {
    open();
    composeWindow().close();
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_TRUE(findWindow().isVisible());
}

TEST_F(CloseFinding, ASendThatBeginsClosesIt) {
    open();
    const QPointer<QWidget> window = &findWindow();
    composeWindow().cmdSndit_Click();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(composeWindow().isEnabled());
    EXPECT_THAT(boxTexts(), ElementsAre(text("You need to enter an e-mail address to send to.")));
}

TEST_F(CloseFinding, OpenedDuringASendItGoesWithTheComposeWindow) {
    write(bob, text("Subject"), text("Hello"));
    mailbox.on("RCPT", support::holdAndSay("250 ok\r\n"));
    QPointer<QWidget> window;
    const support::WhenItHolds look(
        [this] { return !server.keywords().empty() && server.keywords().back() == "RCPT"; },
        [&] {
            composeWindow().cmdSendto->click();
            window = &findWindow();
            EXPECT_TRUE(window->isVisible());
            server.release();
        });
    composeWindow().cmdSndit->click();
    EXPECT_THAT(boxTexts(), ElementsAre(text("Your message has been sent.")));
    EXPECT_FALSE(window && window->isVisible());
    EXPECT_TRUE(mainWindow().isEnabled());
    EXPECT_FALSE(source.isAsked());
}

TEST_F(CloseFinding, AProgramThatEndsLeavesASearchBehindWithoutACrash) {
    open();
    platform::endProgram();
    EXPECT_EQ(programEnds, 1);
    forgetEverything();
    EXPECT_FALSE(source.isAsked());
}

TEST_F(FindInOwnSources, TheSendersAndTheCardsOfTheMembersOwnDriveAreFound) {
    std::filesystem::create_directory(folder.path("Contacts"));
    folder.write("Contacts/a.vcf", "BEGIN:VCARD\nVERSION:4.0\nFN:Cat\nEMAIL:cat@example.net\nEND:VCARD\nx");
    EXPECT_THAT(everybody(),
                ElementsAre(text("bob@example.net"), text("ann@example.net"), text("cat@example.net")));
    EXPECT_EQ(findWindow().lblFinding->text(), text("3 found"));
    findWindow().txtFind->setText(text("miller"));
    QTest::keyClick(findWindow().txtFind, Qt::Key_Return);
    ASSERT_TRUE(eventsRunUntil([] { return findWindow().lstFound->Row() == 1; }));
    QTest::keyClick(findWindow().txtFind, Qt::Key_Return);
    EXPECT_EQ(composeWindow().tTo->text(), text("\"Miller, Bob\" <bob@example.net>"));
    EXPECT_EQ(folder.entries(), 2U) << "the settings and the cards: nothing is stored";
}

TEST_F(FindInOwnSources, AnotherSpellingOfTheDirectoryIsThePersonalBook) {
    for (const char* lookUp : {"directory server", "Directory Server ", "", "Personal Address Book"}) {
        email::settings.AddressLookup = text(lookUp);
        EXPECT_THAT(everybody(), SizeIs(2)) << lookUp;
        findWindow().close();
    }
}

TEST_F(FindInOwnSources, TheDirectoryIsAskedWhereTheSettingsSayExactlySo) {
    email::settings.AddressLookup = text("Directory Server");
    email::settings.LDAPServer = text("not a name");
    EXPECT_THAT(everybody(), IsEmpty());
    EXPECT_EQ(findWindow().lblFinding->text(), text("Please type some letters"));
    findWindow().txtFind->setText(text("ann"));
    ASSERT_TRUE(eventsRunUntil([] { return findWindow().lblFinding->text() != text("Searching..."); }));
    EXPECT_THAT(findWindow().lblFinding->text().toStdString(), testing::StartsWith("Nobody found. "));
    EXPECT_EQ(findWindow().lstFound->Rows(), 1);
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindInOwnSources, ClosedAtOnceWhileTheCardsAreReadItLeavesNothingBehind) {
    composeWindow().cmdSendto->click();
    const QPointer<QWidget> window = &findWindow();
    findWindow().close();
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
    EXPECT_TRUE(composeWindow().isEnabled());
}
