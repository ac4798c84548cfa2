// What is found goes into a field of the compose window.

#include "components/controls/line_box.h"
#include "tests/compose/find_fixture.h"

using support::eventsRunUntil;
using support::kAnn;
using support::kBob;
using support::kCat;
using support::text;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class TakeAddress : public support::FindTest {};
} // namespace

TEST_F(TakeAddress, ReturnTakesTheMarkedOneAndTheWindowStaysForTheNext) {
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

TEST_F(TakeAddress, AfterReturnTheNextNameIsTypedOverTheOneBefore) {
    open();
    type(text("ann"));
    press(Qt::Key_Return);
    source.answer({{kAnn}, false, {}});
    press(Qt::Key_Return);
    type(text("b"));
    EXPECT_EQ(findWindow().txtFind->text(), text("b"));
}

TEST_F(TakeAddress, ReturnBeforeTheAnswerTakesNobodyAndSearchesAtOnce) {
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

TEST_F(TakeAddress, RowsOfAnotherTextCanNeitherBeMarkedNorTaken) {
    openWith({kAnn, kBob});
    type(text("c"));
    press(Qt::Key_Down);
    auto* const list = findWindow().lstFound;
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0, 0)).center());
    EXPECT_EQ(marked(), -1);
    EXPECT_EQ(to(), QString());
}

TEST_F(TakeAddress, TheArrowsInTheFieldMoveTheMarkAndAScreenReaderHearsIt) {
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

TEST_F(TakeAddress, EnterInTheListTakesAndSoDoesADoubleClick) {
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

TEST_F(TakeAddress, TabGoesThroughTheWindowAndUsePressedByItsKeyTakes) {
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

TEST_F(TakeAddress, FromTheOtherButtonTheCopiesGetIt) {
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

TEST_F(TakeAddress, WhatIsTakenStandsBehindWhatIsThere) {
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

TEST_F(TakeAddress, AnAddressThatIsThereIsNotPutThereTwice) {
    openWith({kAnn});
    composeWindow().tTo->setText(text("Annie <ANN@example.NET>"));
    findWindow().cmdUse->click();
    EXPECT_EQ(to(), text("Annie <ANN@example.NET>"));
    EXPECT_EQ(line(), text("Ann Smith stands in To already"));
}

TEST_F(TakeAddress, AFullFieldTakesNoMoreAndNothingIsCut) {
    openWith({kAnn});
    const QString full(controls::LineBox::kMostCharacters - 10, u'x');
    composeWindow().tTo->setText(full);
    findWindow().cmdUse->click();
    EXPECT_EQ(to(), full);
    EXPECT_EQ(line(), text("To has no room for more addresses"));
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(TakeAddress, WhatWasTakenCanBeUndone) {
    QTest::keyClicks(composeWindow().tTo, text("bob@example.org"));
    openWith({kAnn});
    press(Qt::Key_Return);
    composeWindow().tTo->undo();
    EXPECT_EQ(to(), text("bob@example.org"));
}
