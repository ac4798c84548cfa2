// A disabled window can still be read, and its frame shows that it is disabled.

#include "components/controls/resting_palette.h"
#include "tests/support/window_test.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <map>

using controls::contrast;
using support::WindowTest;

namespace {
constexpr double kLegible = 4.5;

struct Theme {
    const char* name;
    QPalette palette;
};

/** The strongest contrast of any pixel with the colour that most pixels have. */
double contrastIn(const QImage& picture) {
    std::map<QRgb, int> pixels;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++pixels[picture.pixel(x, y)];
        }
    }
    const auto fewer = [](const auto& one, const auto& other) { return one.second < other.second; };
    const QColor ground(std::max_element(pixels.begin(), pixels.end(), fewer)->first);
    double strongest = 1;
    for (const auto& [colour, count] : pixels) {
        strongest = std::max(strongest, contrast(QColor(colour), ground));
    }
    return strongest;
}

/** A picture of the control without the frame around it. */
QImage inside(QWidget& part) {
    constexpr int frame = 4;
    const QImage picture = part.grab().toImage();
    return picture.copy(picture.rect().adjusted(frame, frame, -frame, -frame));
}

class Resting : public WindowTest, public testing::WithParamInterface<Theme> {
  public:
    ~Resting() override { QApplication::setPalette(before_); }

  protected:
    Resting() : before_(QApplication::palette()) {
        writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
        startUp();
        loginWindow().hide();
        mainWindow().bringUp();
        QApplication::setPalette(GetParam().palette);
        QCoreApplication::processEvents();
    }

    static void fillTheList() {
        auto* const grid = mainWindow().MailGrid;
        grid->setEnabled(true);
        grid->setRows(3);
        for (int row = 1; row <= 2; ++row) {
            for (int column = 0; column < 5; ++column) {
                grid->setTextMatrix(row, column, QStringLiteral("MMMM"));
            }
        }
        grid->setHighLight(1);
        grid->selectRow(1);
    }

  private:
    QPalette before_;
};
} // namespace

TEST_P(Resting, TheListAndTheFootLineCanBeRead) {
    fillTheList();
    auto& main = mainWindow();
    main.lStats->setText(QStringLiteral("2 messages 99 bytes total"));
    main.setEnabled(false);
    EXPECT_GE(contrastIn(inside(*main.MailGrid->viewport())), kLegible);
    EXPECT_GE(contrastIn(main.lStats->grab().toImage()), kLegible);
    const QPalette list = main.MailGrid->palette();
    EXPECT_GE(contrast(list.color(QPalette::Disabled, QPalette::Text),
                       list.color(QPalette::Disabled, QPalette::Base)),
              kLegible);
    EXPECT_GE(contrast(list.color(QPalette::Disabled, QPalette::Text),
                       list.color(QPalette::Disabled, QPalette::AlternateBase)),
              kLegible);
    EXPECT_GE(contrast(list.color(QPalette::Disabled, QPalette::HighlightedText),
                       list.color(QPalette::Disabled, QPalette::Highlight)),
              kLegible);
}

TEST_P(Resting, TheTextAndTheFieldsOfAMessageCanBeRead) {
    auto& window = messageWindow();
    window.tMessage->setBytes("MMMM MMMM MMMM\r\n");
    window.txtFrom->setText(QStringLiteral("MMMM"));
    window.bringUp();
    window.setEnabled(false);
    EXPECT_GE(contrastIn(inside(*window.tMessage->viewport())), kLegible);
    EXPECT_GE(contrastIn(inside(*window.txtFrom)), kLegible);
    EXPECT_GE(contrastIn(window.lblFrom->grab().toImage()), kLegible);
}

TEST_P(Resting, AFieldThatIsSwitchedOffCanBeReadToo) {
    auto& window = composeWindow();
    window.bringUp();
    window.txtAttachment->setText(QStringLiteral("MMMM"));
    ASSERT_FALSE(window.txtAttachment->isEnabled());
    EXPECT_GE(contrastIn(inside(*window.txtAttachment)), kLegible);
}

TEST_P(Resting, AFrameSaysSo) {
    auto& main = mainWindow();
    const QPoint corner(1, main.height() - 2);
    const QColor before = main.grab().toImage().pixelColor(corner);
    main.setEnabled(false);
    const QColor resting = main.grab().toImage().pixelColor(corner);
    EXPECT_GE(contrast(before, resting), 3.0);
    main.setEnabled(true);
    EXPECT_EQ(main.grab().toImage().pixelColor(corner), before);
}

TEST_P(Resting, TheListLooksTheSameWhileAMessageIsOpened) {
    fillTheList();
    auto* const grid = mainWindow().MailGrid;
    mainWindow().cmdExit->setFocus();
    const QImage before = grid->grab().toImage();
    grid->setEnabled(false);
    EXPECT_EQ(grid->grab().toImage(), before);
}

INSTANTIATE_TEST_SUITE_P(Themes, Resting,
                         testing::Values(Theme{"Light", QPalette(QColor(239, 239, 239))},
                                         Theme{"White", QPalette(Qt::white)},
                                         Theme{"Dark", QPalette(QColor(60, 60, 64), QColor(30, 30, 30))},
                                         Theme{"Black", QPalette(QColor(20, 20, 20), Qt::black)}),
                         [](const auto& theme) { return std::string(theme.param.name); });
