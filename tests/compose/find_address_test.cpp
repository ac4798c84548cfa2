// The window that finds addresses for a field of the compose window.

#include "components/controls/announcement.h"
#include "components/controls/line_box.h"
#include "email/mailbox.h"
#include "platform/program.h"
#include "platform/runtime_error.h"
#include "tests/compose/send_fixture.h"
#include "tests/support/scripted_addresses.h"
#include "windows/frmFind.h"

#include <QApplication>
#include <QLabel>
#include <QTest>

#include <filesystem>

using addresses::FoundAddress;
using addresses::Outcome;
using support::eventsRunUntil;
using support::SendTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
const FoundAddress kAnn{"Ann Smith", "ann@example.net", "Mail"};
const FoundAddress kBob{"Miller, Bob", "bob@example.net", "Address book"};
const FoundAddress kCat{"", "cat@example.net", "Mail"};

QString text(const char* ascii) {
    return QString::fromUtf8(ascii);
}

/** The compose window of a member who may find addresses. */
class FindAddress : public SendTest {
  protected:
    FindAddress() {
        composeWindow().cmdSendto->show();
        composeWindow().cmdCCto->show();
    }

    /** Opens the window for the field To, which asks for everybody. */
    void open() {
        composeWindow().cmdSendto->click();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&findWindow()));
    }

    void openWith(std::vector<FoundAddress> found) {
        open();
        source.answer({std::move(found), false, {}});
    }

    static void type(const QString& letters) { QTest::keyClicks(findWindow().txtFind, letters); }

    static void press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, held);
    }

    static int marked() { return findWindow().lstFound->Row(); }

    static QString line() { return findWindow().lblFinding->text(); }

    static QString heard() { return findWindow().annFound->accessibleName(); }

    static QString to() { return composeWindow().tTo->text(); }

    support::ScriptedAddresses source;
};

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

TEST_F(FindAddress, StandsAboveTheComposeWindowWithTheKeyboardInItsField) {
    open();
    EXPECT_EQ(findWindow().windowTitle(), text("Example School E-Mail"));
    EXPECT_FALSE(composeWindow().isEnabled());
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
    EXPECT_THAT(source.asked, ElementsAre(""));
    EXPECT_EQ(line(), text("Searching..."));
    EXPECT_FALSE(findWindow().cmdUse->isEnabled());
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, LeavesTheFieldsInViewAboveIt) {
    open();
    for (const QWidget* field : {composeWindow().tTo, composeWindow().tCc}) {
        EXPECT_LT(field->mapToGlobal(field->rect().bottomLeft()).y(), findWindow().frameGeometry().top());
    }
    EXPECT_EQ(findWindow().frameGeometry().bottom(), composeWindow().frameGeometry().bottom());
}

TEST_F(FindAddress, TypingSearchesOnceAfterAPause) {
    open();
    type(text("bo"));
    type(text("b"));
    EXPECT_THAT(source.asked, SizeIs(1));
    ASSERT_TRUE(eventsRunUntil([this] { return source.asked.size() == 2; }));
    EXPECT_EQ(source.asked.back(), "bob");
    source.answer({{kBob}, false, {}});
    EXPECT_FALSE(findWindow().tmrFind->isActive());
    EXPECT_EQ(source.sources, 1);
}

TEST_F(FindAddress, TheFirstOneFoundIsMarked) {
    openWith({kAnn, kBob});
    EXPECT_EQ(marked(), 1);
    EXPECT_TRUE(findWindow().cmdUse->isEnabled());
    const auto* const list = findWindow().lstFound;
    EXPECT_EQ(list->Rows(), 3);
    EXPECT_EQ(list->TextMatrix(0, 0), text("Name"));
    EXPECT_EQ(list->TextMatrix(0, 1), text("Address"));
    EXPECT_EQ(list->TextMatrix(0, 2), text("Found in"));
    EXPECT_EQ(list->TextMatrix(2, 0), text("Miller, Bob"));
    EXPECT_EQ(list->TextMatrix(2, 1), text("bob@example.net"));
    EXPECT_EQ(list->TextMatrix(2, 2), text("Address book"));
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
}

TEST_F(FindAddress, TheLineTellsHowManyWereFoundAndAScreenReaderHearsIt) {
    struct Case {
        Outcome outcome;
        const char* line;
    };

    const std::vector<Case> cases{
        {{{}, false, {}}, "Please type some letters"},
        {{{}, false, {}}, "Nobody found"},
        {{{kAnn}, false, {}}, "1 found"},
        {{{kAnn, kBob}, false, {}}, "2 found"},
        {{std::vector<FoundAddress>(addresses::mostFound, kAnn), true, {}},
         "More than 50 found: please type more letters"},
        {{{kAnn}, false, "2 cards could not be read."}, "1 found. 2 cards could not be read."},
        {{{}, false, "The directory does not answer."}, "Nobody found. The directory does not answer."}};
    open();
    for (const Case& one : cases) {
        source.answer(one.outcome);
        EXPECT_EQ(line(), text(one.line));
        EXPECT_EQ(heard(), text(one.line));
        EXPECT_EQ(marked(), one.outcome.found.empty() ? -1 : 1);
        findWindow().txtFind->setText(findWindow().txtFind->text() + u'x');
        EXPECT_EQ(line(), text("Searching..."));
        press(Qt::Key_Return);
    }
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, ReturnTakesTheMarkedOneAndTheWindowStaysForTheNext) {
    openWith({kAnn, kBob});
    press(Qt::Key_Return);
    EXPECT_EQ(to(), text("Ann Smith <ann@example.net>"));
    EXPECT_EQ(line(), text("Ann Smith stands in To now"));
    EXPECT_EQ(heard(), line());
    EXPECT_TRUE(findWindow().isVisible());
    press(Qt::Key_Down);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(to(), text("Ann Smith <ann@example.net>, \"Miller, Bob\" <bob@example.net>"));
    EXPECT_EQ(composeWindow().tCc->text(), QString());
}

TEST_F(FindAddress, AfterReturnTheNextNameIsTypedOverTheOneBefore) {
    open();
    type(text("ann"));
    press(Qt::Key_Return);
    source.answer({{kAnn}, false, {}});
    press(Qt::Key_Return);
    type(text("b"));
    EXPECT_EQ(findWindow().txtFind->text(), text("b"));
}

TEST_F(FindAddress, ReturnBeforeTheAnswerTakesNobodyAndSearchesAtOnce) {
    openWith({kAnn});
    type(text("bob"));
    EXPECT_EQ(marked(), -1) << "the rows that are shown are the answer to another text";
    EXPECT_FALSE(findWindow().cmdUse->isEnabled());
    press(Qt::Key_Return);
    EXPECT_THAT(source.asked, ElementsAre("", "bob"));
    press(Qt::Key_Return);
    EXPECT_THAT(source.asked, ElementsAre("", "bob")) << "it runs already";
    EXPECT_FALSE(findWindow().tmrFind->isActive());
    EXPECT_EQ(to(), QString());
}

TEST_F(FindAddress, RowsOfAnotherTextCanNeitherBeMarkedNorTaken) {
    openWith({kAnn, kBob});
    type(text("c"));
    press(Qt::Key_Down);
    auto* const list = findWindow().lstFound;
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0, 0)).center());
    EXPECT_EQ(marked(), -1);
    EXPECT_EQ(to(), QString());
}

TEST_F(FindAddress, ALetterTypedWhileASearchRunsGivesThatSearchUp) {
    open();
    type(text("a"));
    EXPECT_FALSE(source.isAsked());
    ASSERT_TRUE(eventsRunUntil([this] { return source.isAsked(); }));
    EXPECT_THAT(source.asked, ElementsAre("", "a"));
    type(text("n"));
    EXPECT_FALSE(source.isAsked());
    EXPECT_EQ(line(), text("Searching..."));
}

TEST_F(FindAddress, TheArrowsInTheFieldMoveTheMarkAndAScreenReaderHearsIt) {
    openWith({kAnn, kBob, kCat});
    press(Qt::Key_Down);
    EXPECT_EQ(marked(), 2);
    EXPECT_EQ(heard(), text("\"Miller, Bob\" <bob@example.net>"));
    press(Qt::Key_PageDown);
    EXPECT_EQ(marked(), 3);
    EXPECT_EQ(heard(), text("cat@example.net"));
    press(Qt::Key_Up);
    EXPECT_EQ(marked(), 2);
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
    press(Qt::Key_Return);
    EXPECT_EQ(to(), text("\"Miller, Bob\" <bob@example.net>"));
}

TEST_F(FindAddress, EnterInTheListTakesAndSoDoesADoubleClick) {
    openWith({kAnn, kBob, kCat});
    press(Qt::Key_Tab);
    auto* const list = findWindow().lstFound;
    EXPECT_TRUE(list->hasFocus());
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(to(), text("\"Miller, Bob\" <bob@example.net>"));
    const QPoint third = list->visualItemRect(list->item(2, 1)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, third);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, third);
    EXPECT_EQ(to(), text("\"Miller, Bob\" <bob@example.net>, cat@example.net"));
}

TEST_F(FindAddress, TabGoesThroughTheWindowAndUsePressedByItsKeyTakes) {
    openWith({kAnn});
    QStringList names;
    for (int presses = 0; presses < 4; ++presses) {
        names.append(QApplication::focusWidget()->objectName());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(names, ElementsAre(text("txtFind"), text("lstFound"), text("cmdUse"), text("cmdClose")));
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
    QTest::keyClick(&findWindow(), Qt::Key_U, Qt::AltModifier);
    // Qt shows the button pressed for a moment before it is.
    EXPECT_TRUE(eventsRunUntil([] { return !to().isEmpty(); }));
    EXPECT_EQ(to(), text("Ann Smith <ann@example.net>"));
    EXPECT_TRUE(findWindow().isVisible());
}

TEST_F(FindAddress, FromTheOtherButtonTheCopiesGetIt) {
    composeWindow().tCc->setText(text("me@example.org"));
    composeWindow().cmdCCto->click();
    source.answer({{kCat}, false, {}});
    findWindow().cmdUse->click();
    EXPECT_EQ(composeWindow().tCc->text(), text("me@example.org, cat@example.net"));
    EXPECT_EQ(line(), text("cat@example.net stands in Cc now"));
    EXPECT_EQ(to(), QString());
    findWindow().cmdClose->click();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    EXPECT_TRUE(composeWindow().tCc->hasFocus());
}

TEST_F(FindAddress, WhatIsTakenStandsBehindWhatIsThere) {
    struct Case {
        const char* before;
        const char* after;
    };

    openWith({kCat});
    for (const Case& one : {Case{"", "cat@example.net"}, Case{"  ", "  cat@example.net"},
                            Case{"ann@example.net", "ann@example.net, cat@example.net"},
                            Case{"ann@example.net,", "ann@example.net, cat@example.net"},
                            Case{"ann@example.net, ", "ann@example.net,  cat@example.net"},
                            Case{"half", "half, cat@example.net"}}) {
        composeWindow().tTo->setText(text(one.before));
        findWindow().cmdUse->click();
        EXPECT_EQ(to(), text(one.after));
    }
}

TEST_F(FindAddress, AnAddressThatIsThereIsNotPutThereTwice) {
    openWith({kAnn});
    composeWindow().tTo->setText(text("Annie <ANN@example.NET>"));
    findWindow().cmdUse->click();
    EXPECT_EQ(to(), text("Annie <ANN@example.NET>"));
    EXPECT_EQ(line(), text("Ann Smith stands in To already"));
}

TEST_F(FindAddress, AFullFieldTakesNoMoreAndNothingIsCut) {
    openWith({kAnn});
    const QString full(controls::LineBox::kMostCharacters - 10, u'x');
    composeWindow().tTo->setText(full);
    findWindow().cmdUse->click();
    EXPECT_EQ(to(), full);
    EXPECT_EQ(line(), text("To has no room for more addresses"));
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, WhatWasTakenCanBeUndone) {
    QTest::keyClicks(composeWindow().tTo, text("bob@example.org"));
    openWith({kAnn});
    press(Qt::Key_Return);
    composeWindow().tTo->undo();
    EXPECT_EQ(to(), text("bob@example.org"));
}

TEST_F(FindAddress, ClosedItGivesTheKeyboardToTheFieldWithTheCaretAtItsEnd) {
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

TEST_F(FindAddress, OpenedAgainItBeginsAnew) {
    openWith({kAnn});
    type(text("ann"));
    findWindow().close();
    open();
    EXPECT_EQ(findWindow().txtFind->text(), QString());
    EXPECT_EQ(findWindow().lstFound->Rows(), 1);
    EXPECT_EQ(source.sources, 2);
    EXPECT_EQ(source.asked.back(), "");
}

TEST_F(FindAddress, ClosedWhileASearchRunsItGivesItUp) {
    open();
    const QPointer<QWidget> window = &findWindow();
    findWindow().cmdClose->click();
    EXPECT_FALSE(source.isAsked());
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
    EXPECT_TRUE(composeWindow().isEnabled());
}

TEST_F(FindAddress, ClosedInThePauseBeforeASearchItAsksNobody) {
    open();
    type(text("ann"));
    const QPointer<QWidget> window = &findWindow();
    findWindow().close();
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
    EXPECT_THAT(source.asked, SizeIs(1));
}

TEST_F(FindAddress, AComposeWindowThatClosesTakesItAlong) {
    open();
    const QPointer<QWidget> window = &findWindow();
    unload(composeWindow());
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(source.isAsked());
    EXPECT_TRUE(mainWindow().isEnabled());
    ASSERT_TRUE(eventsRunUntil([&window] { return window.isNull(); }));
}

TEST_F(FindAddress, TheComposeWindowCannotBeClosedByItsFrameMeanwhile) {
    open();
    composeWindow().close();
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_TRUE(findWindow().isVisible());
}

TEST_F(FindAddress, ASendThatBeginsClosesIt) {
    open();
    const QPointer<QWidget> window = &findWindow();
    composeWindow().cmdSndit_Click();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(composeWindow().isEnabled());
    EXPECT_THAT(boxTexts(), ElementsAre(text("You need to enter an e-mail address to send to.")));
}

TEST_F(FindAddress, OpenedDuringASendItGoesWithTheComposeWindow) {
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

TEST_F(FindAddress, AProgramThatEndsLeavesASearchBehindWithoutACrash) {
    open();
    platform::endProgram();
    EXPECT_EQ(programEnds, 1);
    forgetEverything();
    EXPECT_FALSE(source.isAsked());
}

TEST_F(FindAddress, AnErrorIsToldInTheLineAndNotInABox) {
    source.trouble = [] { throw platform::RuntimeError(platform::errors::FileNotFound); };
    open();
    EXPECT_EQ(line(), text("The addresses cannot be looked up. Error# 53"));
    EXPECT_EQ(heard(), line());
    source.trouble = {};
    press(Qt::Key_Return);
    source.answer({{kAnn}, false, {}});
    EXPECT_EQ(line(), text("1 found"));
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, TheColumnsHaveRoomInASmallWindowToo) {
    openWith({kAnn, {std::string(64, 'W'), std::string(200, 'w') + "@example.net", "Mail"}});
    for (const QSize& size : {findWindow().size(), findWindow().minimumSizeHint(), QSize(1'200, 600)}) {
        findWindow().resize(size);
        QCoreApplication::processEvents();
        const auto* const list = findWindow().lstFound;
        const int letter = list->fontMetrics().averageCharWidth();
        EXPECT_GE(list->columnWidth(0), 8 * letter);
        EXPECT_GE(list->columnWidth(1), 10 * letter);
        EXPECT_LE(list->columnWidth(0) + list->columnWidth(1) + list->columnWidth(2),
                  list->viewport()->width());
    }
}
