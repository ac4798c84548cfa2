// Where windows read from right to left, addresses and sizes still read as they are written.

#include "components/controls/message_box.h"
#include "components/controls/msflexgrid.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QTest>

using MSFlexGridLib::MSFlexGrid;

namespace {
class RightToLeft : public support::WindowTest {
  public:
    ~RightToLeft() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

  protected:
    RightToLeft() { QApplication::setLayoutDirection(Qt::RightToLeft); }

    /** How a list shows the text in its only cell. */
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
        // With a mark that sets the direction, which is what a person expects to see without one.
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
