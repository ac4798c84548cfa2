// Where windows read from right to left, addresses and sizes still read as they are written.

#include "components/controls/directory_list_box.h"
#include "components/controls/message_box.h"
#include "components/controls/msflexgrid.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using MSFlexGridLib::MSFlexGrid;

namespace {
class RightToLeft : public support::WindowTest {
  public:
    ~RightToLeft() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

  protected:
    RightToLeft() { QApplication::setLayoutDirection(Qt::RightToLeft); }

    /** A picture of a list whose only cell holds the text. */
    static QImage shownAs(const QString& text) {
        MSFlexGrid grid(1);
        grid.setRows(2);
        grid.setTextMatrix(1, 0, text);
        grid.setColWidth(0, 300);
        grid.resize(320, 100);
        EXPECT_EQ(grid.TextMatrix(1, 0), text);
        return grid.viewport()->grab().toImage();
    }
};
} // namespace

TEST_F(RightToLeft, TheListShowsSizesAndAddressesInTheirOwnOrder) {
    for (const QString& text :
         {QStringLiteral("(1234 bytes)"), QStringLiteral("Ann Smith <ann@example.org>")}) {
        // The text within direction marks has the right order. Without marks it must look the same.
        const QString marked = u'\u202A' + text + u'\u202C';
        EXPECT_EQ(shownAs(text), shownAs(marked)) << text.toStdString();
    }
}

TEST_F(RightToLeft, TheFootLineStandsAtTheRight) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    loginWindow().hide();
    mainWindow().bringUp();
    const QImage picture = mainWindow().lStats->grab().toImage();
    const auto hasInk = [&picture](int x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixelColor(x, y) != picture.pixelColor(0, 0)) {
                return true;
            }
        }
        return false;
    };
    int last = picture.width() - 1;
    while (last > 0 && !hasInk(last)) {
        --last;
    }
    EXPECT_GT(last, picture.width() - 10);
}

TEST_F(RightToLeft, CaptionsStandBesideTheirFields) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    frmSetup& window = setupWindow();
    window.bringUp();
    for (const QLabel* caption : window.findChildren<QLabel*>()) {
        if (caption->buddy() != nullptr) {
            EXPECT_TRUE(caption->alignment().testFlags(Qt::AlignLeft | Qt::AlignAbsolute))
                << caption->text().toStdString();
        }
    }
}

TEST_F(RightToLeft, TheDotsBehindACaptionStayBehindIt) {
    writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
    startUp();
    composeWindow().bringUp();
    QPushButton* const button = composeWindow().cmdAttach;
    EXPECT_EQ(button->text(), QStringLiteral("\u2068&Attach...\u2069"));
    const QImage shown = button->grab().toImage();
    button->setText(QStringLiteral("\u202A&Attach...\u202C"));
    EXPECT_EQ(button->grab().toImage(), shown);
    button->setText(QStringLiteral("&Attach..."));
    EXPECT_NE(button->grab().toImage(), shown);
    // Showing the window again must not add the marks again.
    composeWindow().hide();
    composeWindow().show();
    composeWindow().hide();
    composeWindow().show();
    EXPECT_EQ(button->text(), QStringLiteral("\u2068&Attach...\u2069"));
}

namespace {
/**
 * Returns where the foot of the backslash in "C:\" is: from 0 at the left end of the name to 1 at its right
 * end. The foot is the lowest part of the name, since it reaches below the letters.
 */
double footOfTheBackslash(Qt::LayoutDirection direction) {
    controls::DirectoryListBox list;
    list.setLayoutDirection(direction);
    list.resize(300, 100);
    list.setPath(QStringLiteral("C:\\"));
    QRect row = list.visualRect(list.model()->index(0, 0));
    const int picture = list.iconSize().width() + 5; // with the room around it
    row.adjust(direction == Qt::LeftToRight ? picture : 1, 1, direction == Qt::LeftToRight ? -1 : -picture,
               -1);
    const QImage name = list.viewport()->grab(row).toImage();
    const QColor ground = name.pixelColor(name.width() / 2, name.height() / 2);
    QRect ink;
    int foot = 0;
    for (int y = 0; y < name.height(); ++y) {
        for (int x = 0; x < name.width(); ++x) {
            if (name.pixelColor(x, y) != ground) {
                ink |= QRect(x, y, 1, 1);
                foot = x;
            }
        }
    }
    EXPECT_GT(ink.width(), 3);
    return static_cast<double>(foot - ink.left()) / ink.width();
}
} // namespace

TEST_F(RightToLeft, AFoldersBackslashStaysBehindIt) {
    EXPECT_GT(footOfTheBackslash(Qt::LeftToRight), 0.7);
    EXPECT_GT(footOfTheBackslash(Qt::RightToLeft), 0.7);
}

TEST_F(RightToLeft, ABoxShowsEachLineInItsOwnOrderAndIsAskedWithNoMarks) {
    controls::replaceMessageBox({});
    QString shown;
    const support::WhenItHolds opened(
        [] {
            const QWidget* modal = QApplication::activeModalWidget();
            return modal != nullptr && modal->isActiveWindow();
        },
        [&shown] {
            auto* real = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(real, nullptr);
            shown = real->text();
            QTest::keyClick(real, Qt::Key_Return);
        });
    controls::showMessage(QStringLiteral("Saved to: C:\\a.txt\n(12 bytes)"), QStringLiteral("Title"));
    EXPECT_EQ(shown, QStringLiteral("\u2068Saved to: C:\\a.txt\u2069\n\u2068(12 bytes)\u2069"));
}
