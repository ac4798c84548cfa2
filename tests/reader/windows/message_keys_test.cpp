// The keys of the message window.

#include "tests/reader/windows/reader_fixture.h"

using support::ReaderTest;

namespace {
class MessageKeys : public ReaderTest {
  protected:
    static frmFrom& window() { return messageWindow(); }

    void openText(const std::string& text) {
        openOnly("From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: today\r\n\r\nText\r\n");
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
        window().tMessage->setBytes(text);
    }
};
} // namespace

TEST_F(MessageKeys, EscapeClosesTheFindBarFirstWhereverTheFocusIsAndThenTheWindow) {
    for (const bool inTheBar : {true, false}) {
        if (inTheBar) {
            openText("text");
        } else {
            doubleClick(1);
            ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
        }
        QTest::keyClick(&window(), Qt::Key_F, Qt::ControlModifier);
        ASSERT_TRUE(window().barFind->isVisible());
        QWidget* const focus =
            inTheBar ? static_cast<QWidget*>(window().barFind->txtFind) : window().cmdReply;
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_Escape);
        EXPECT_FALSE(window().barFind->isVisible());
        EXPECT_TRUE(window().isVisible());
        EXPECT_TRUE(window().tMessage->hasFocus());
        QTest::keyClick(window().tMessage, Qt::Key_Escape);
        EXPECT_FALSE(window().isVisible());
        expectUsableMainWindow();
    }
}

TEST_F(MessageKeys, EscapeDoesNothingInALetterNorInTheMainWindow) {
    openText("text");
    window().cmdReply->click();
    frmSend& compose = composeWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&compose));
    for (QWidget* field : std::initializer_list<QWidget*>{compose.tTo, compose.tMessage, compose.cmdSndit}) {
        QTest::keyClick(field, Qt::Key_Escape);
    }
    EXPECT_TRUE(compose.isVisible());
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("RE: Hello"));
    compose.cmdCancel->click();
    unload(window());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    QTest::keyClick(&mainWindow(), Qt::Key_Escape);
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(MessageKeys, F3OpensTheBarAndThenFindsTheNextPlace) {
    openText("word one\r\nword two");
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_TRUE(window().barFind->isVisible());
    EXPECT_TRUE(window().barFind->txtFind->hasFocus());
    window().barFind->txtFind->setText(QStringLiteral("word"));
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_EQ(window().tMessage->textCursor().selectionEnd(), 4);
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_EQ(window().tMessage->textCursor().selectionEnd(), 13);
}
