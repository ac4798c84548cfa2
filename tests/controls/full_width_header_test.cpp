#include "components/controls/msflexgrid.h"
#include "tests/support/application.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <gtest/gtest.h>

namespace {
using MSFlexGridLib::MSFlexGrid;

class FullWidthHeader : public testing::TestWithParam<Qt::LayoutDirection> {
  protected:
    FullWidthHeader() { support::application(); }

    /** A picture of the titles of a list whose two columns leave the last 100 pixels of its width free. */
    static QImage titles(Qt::LayoutDirection direction) {
        MSFlexGrid grid(2);
        grid.setLayoutDirection(direction);
        grid.resize(400, 200);
        const int width = grid.horizontalHeader()->width();
        for (int column = 0; column < 2; ++column) {
            grid.setColWidth(column, (grid.usableWidth() - 100) / 2);
        }
        EXPECT_LE(grid.horizontalHeader()->length(), width);
        return grid.grab().toImage().copy(grid.horizontalHeader()->geometry());
    }
};
} // namespace

TEST_P(FullWidthHeader, LooksLikeATitleBesideTheLastColumn) {
    const QImage picture = titles(GetParam());
    const bool rightToLeft = GetParam() == Qt::RightToLeft;
    const int inATitle = rightToLeft ? picture.width() - 20 : 20;
    const int beside = rightToLeft ? 20 : picture.width() - 20;
    for (int y = 0; y < picture.height(); ++y) {
        EXPECT_EQ(picture.pixelColor(beside, y), picture.pixelColor(inATitle, y)) << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Directions, FullWidthHeader, testing::Values(Qt::LeftToRight, Qt::RightToLeft),
                         [](const auto& test) {
                             return test.param == Qt::RightToLeft ? "RightToLeft" : "LeftToRight";
                         });
