#include "platform/nested_wait.h"
#include "platform/runtime_error.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <new>

using support::WindowTest;
using testing::ElementsAre;

namespace {
class Windows : public WindowTest {
  protected:
    Windows() {
        writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
        startUp();
    }

    static void runEventLoop() {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
};
} // namespace

TEST_F(Windows, AnUnloadedWindowIsForgottenAndItsAccessorMakesANewOne) {
    aboutWindow().setWindowTitle(QStringLiteral("old"));
    unload(aboutWindow());
    EXPECT_EQ(aboutWindow().windowTitle(), QStringLiteral("About Brindlewake"));
}

TEST_F(Windows, AnUnloadedWindowIsDestroyedOnceTheEventLoopIsReached) {
    const QPointer<QWidget> about = &aboutWindow();
    unload(aboutWindow());
    EXPECT_FALSE(about.isNull()) << "a handler further down may still use it";
    runEventLoop();
    EXPECT_TRUE(about.isNull());
}

TEST_F(Windows, AWindowUnloadedWhileAHandlerWaitsLivesUntilTheWaitIsOver) {
    const QPointer<QWidget> about = &aboutWindow();
    {
        const platform::NestedWait wait;
        unload(aboutWindow());
        runEventLoop();
        EXPECT_FALSE(about.isNull());
    }
    EXPECT_FALSE(about.isNull());
    runEventLoop();
    EXPECT_TRUE(about.isNull());
}

TEST_F(Windows, AWindowClosedUnderItsOwnMessageBoxLivesUntilTheHandlerIsThrough) {
    const QPointer<QWidget> login = &loginWindow();
    whileBoxIsOpen = [&](const controls::MessageBox&) {
        loginWindow().close();
        runEventLoop();
        EXPECT_FALSE(login.isNull());
    };
    loginWindow().cmdLogin->click();
    runEventLoop();
    EXPECT_TRUE(login.isNull());
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(Windows, AnErrorThatAHandlerDoesNotTrapEndsInTheGenericReport) {
    runHandler([] { throw platform::RuntimeError(platform::errors::DiskFull); });
    ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral(
                                "Run-time error 61\n\nThe disk is full. Make room on it and try again.")));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
    EXPECT_EQ(programEnds, 0);
}

TEST_F(Windows, MemoryThatCannotBeHadIsError7) {
    runHandler([] { throw std::bad_alloc(); });
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error 7")));
}

namespace {
/** Throws out of an event, as Qt does when the clipboard holds more than fits in memory. */
class TooLarge : public QObject {
  public:
    bool event(QEvent* /*event*/) override { throw std::bad_alloc(); }
};
} // namespace

TEST_F(Windows, WantOfMemoryInsideQtIsReportedOnceAndLater) {
    TooLarge object;
    for (int i = 0; i < 3; ++i) {
        QEvent event(QEvent::User);
        EXPECT_FALSE(QCoreApplication::sendEvent(&object, &event));
    }
    EXPECT_TRUE(boxes.empty());
    runEventLoop();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Run-time error 7")));
    EXPECT_EQ(programEnds, 0);
}

namespace {
/** What was seen of a real message box. */
struct BoxSeen {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QRect place;
    int width = 0;
    /** The number of lines that the text takes, and the pixels between it and the two edges. */
    int lines = 0;
    int roomAtLeft = 0;
    int roomAtRight = 0;
    bool hasPictures = false;
};

class RealMessageBox : public Windows {
  protected:
    RealMessageBox() { controls::replaceMessageBox({}); }

    controls::MessageAnswer show(const controls::MessageBox& box, Qt::Key key,
                                 Qt::KeyboardModifiers held = {}) {
        const support::WhenItHolds opened(
            [] {
                const QWidget* modal = QApplication::activeModalWidget();
                return modal != nullptr && modal->isActiveWindow();
            },
            [&] {
                auto* real = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                ASSERT_NE(real, nullptr);
                look(*real);
                QTest::keyClick(real, key, held);
            });
        return controls::showMessageBox(box);
    }

    void look(const QMessageBox& real) {
        seen = {.title = real.windowTitle(),
                .text = real.text(),
                .icon = real.icon(),
                .buttons = real.standardButtons(),
                .place = real.frameGeometry(),
                .width = real.width()};
        const auto* label = real.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        ASSERT_NE(label, nullptr);
        const QFontMetrics metrics = label->fontMetrics();
        const QRect text = metrics.boundingRect(label->geometry(), Qt::TextWordWrap, label->text());
        seen.lines = text.height() / metrics.lineSpacing();
        seen.roomAtLeft = text.left();
        seen.roomAtRight = real.width() - text.right();
        for (const QAbstractButton* button : real.buttons()) {
            seen.hasPictures = seen.hasPictures || !button->icon().isNull();
        }
    }

    BoxSeen seen;
};
} // namespace

TEST_F(RealMessageBox, ShowsTextTitleIconAndButton) {
    const auto reply = show({QStringLiteral("Text <b>as it is</b>"), QStringLiteral("Title"),
                             controls::MessageIcon::Exclamation, controls::MessageButtons::Ok},
                            Qt::Key_Return);
    EXPECT_EQ(reply, controls::MessageAnswer::Ok);
    EXPECT_EQ(seen.title, QStringLiteral("Title"));
    EXPECT_EQ(seen.text, QStringLiteral("Text <b>as it is</b>"));
    EXPECT_EQ(seen.icon, QMessageBox::Warning);
    EXPECT_EQ(seen.buttons, QMessageBox::Ok);
}

TEST_F(RealMessageBox, ALongTitleIsNotCutByItsFrame) {
    const QString title = QStringLiteral("The Royal Grammar School of Saint Cuthbert at Lower E-Mail");
    show({QStringLiteral("Short."), title, controls::MessageIcon::None, controls::MessageButtons::Ok},
         Qt::Key_Return);
    QFont bold = QApplication::font();
    bold.setBold(true);
    const QFontMetrics metrics(bold);
    EXPECT_GE(seen.width, metrics.horizontalAdvance(title) + 8 * metrics.height());
    show({QStringLiteral("Short."), QString(3'000, u'W'), controls::MessageIcon::None,
          controls::MessageButtons::Ok},
         Qt::Key_Return);
    EXPECT_LE(seen.width, QApplication::primaryScreen()->availableSize().width());
}

TEST_F(RealMessageBox, AQuestionStandsOnOneLineWithRoomOnBothSidesInLettersOfAnySize) {
    const QFont usual = QApplication::font();
    for (const double enlarged : {1.0, 2.0}) {
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * enlarged);
        QApplication::setFont(font);
        show({QStringLiteral("Attachment has been saved to: C:\\letters\\lake.png"), QStringLiteral("Title"),
              controls::MessageIcon::None, controls::MessageButtons::Ok},
             Qt::Key_Return);
        EXPECT_EQ(seen.lines, 1) << enlarged;
        EXPECT_NEAR(seen.roomAtLeft, seen.roomAtRight, seen.roomAtLeft / 2) << enlarged;
        EXPECT_TRUE(loginWindow().screen()->availableGeometry().contains(seen.place)) << enlarged;
    }
    QApplication::setFont(usual);
}

TEST_F(RealMessageBox, ALongTextIsBroken) {
    show({QStringLiteral("word ").repeated(100), QStringLiteral("Title"), controls::MessageIcon::None,
          controls::MessageButtons::Ok},
         Qt::Key_Return);
    EXPECT_GT(seen.lines, 3);
}

TEST_F(RealMessageBox, ItsButtonsAreBareLikeThoseOfTheWindows) {
    show({QStringLiteral("Sure?"), QStringLiteral("Title"), controls::MessageIcon::None,
          controls::MessageButtons::YesNo},
         Qt::Key_Escape);
    EXPECT_FALSE(seen.hasPictures);
}

// At scale 2, a negative base size makes a window manager open a huge window.
TEST_F(Windows, AWindowThatIsPreparedBeforeItIsShownHasABaseSizeOfNothing) {
    ASSERT_EQ(mainWindow().windowHandle(), nullptr);
    mainWindow().prepare();
    EXPECT_EQ(mainWindow().windowHandle()->baseSize(), QSize(0, 0));
}

TEST_F(RealMessageBox, EscapeMeansNo) {
    const auto reply = show({QStringLiteral("Sure?"), QStringLiteral("Title"), controls::MessageIcon::None,
                             controls::MessageButtons::YesNo},
                            Qt::Key_Escape);
    EXPECT_EQ(reply, controls::MessageAnswer::No);
    EXPECT_EQ(seen.icon, QMessageBox::NoIcon);
    EXPECT_EQ(seen.buttons, QMessageBox::Yes | QMessageBox::No);
}

TEST_F(RealMessageBox, EscapeMeansWhatLosesNothing) {
    controls::MessageBox box{QStringLiteral("Go on?"), QStringLiteral("Title"), controls::MessageIcon::None,
                             controls::MessageButtons::YesNo};
    box.closingAnswer = controls::MessageAnswer::Yes;
    EXPECT_EQ(show(box, Qt::Key_Escape), controls::MessageAnswer::Yes);
}

TEST_F(RealMessageBox, ALetterAloneIsNoAnswerWhereTheUserMayBeWritingOn) {
    controls::MessageBox box{QStringLiteral("Go on?"), QStringLiteral("Title"), controls::MessageIcon::None,
                             controls::MessageButtons::YesNo};
    box.takesBareLetters = false;
    const support::WhenItHolds opened(
        [] { return QApplication::activeModalWidget() != nullptr; },
        [] { QTest::keyClicks(QApplication::activeModalWidget(), QStringLiteral("nina@example.org")); });
    EXPECT_EQ(show(box, Qt::Key_Return), controls::MessageAnswer::Yes);
    EXPECT_EQ(show(box, Qt::Key_N, Qt::AltModifier), controls::MessageAnswer::No);
    box.takesBareLetters = true;
    EXPECT_EQ(show(box, Qt::Key_N), controls::MessageAnswer::No);
}

TEST_F(RealMessageBox, YesMeansYes) {
    const auto reply = show({QStringLiteral("Sure?"), QStringLiteral("Title"),
                             controls::MessageIcon::Question, controls::MessageButtons::YesNo},
                            Qt::Key_Y, Qt::AltModifier);
    EXPECT_EQ(reply, controls::MessageAnswer::Yes);
}

TEST_F(RealMessageBox, ReturnGivesTheAnswerThatIsTheDefault) {
    controls::MessageBox box{QStringLiteral("Sure?"), QStringLiteral("Title"), controls::MessageIcon::None,
                             controls::MessageButtons::YesNo};
    EXPECT_EQ(show(box, Qt::Key_Return), controls::MessageAnswer::Yes);
    box.defaultAnswer = controls::MessageAnswer::No;
    EXPECT_EQ(show(box, Qt::Key_Return), controls::MessageAnswer::No);
}

TEST_F(RealMessageBox, LeavesFreeWhatItAsksAbout) {
    const QRect screen = loginWindow().screen()->availableGeometry();
    for (const int top : {screen.top() + 10, screen.center().y(), screen.bottom() - 30}) {
        loginWindow().bringUp();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&loginWindow()));
        const QRect row(screen.left(), top, screen.width(), 20);
        show({.text = QStringLiteral("Sure?"),
              .title = QStringLiteral("Title"),
              .buttons = controls::MessageButtons::YesNo,
              .leftFree = row},
             Qt::Key_Escape);
        EXPECT_FALSE(seen.place.intersects(row)) << top;
        EXPECT_TRUE(screen.contains(seen.place)) << top;
    }
}
