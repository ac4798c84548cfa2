#include "components/controls/grid_cells.h"
#include "components/controls/msflexgrid.h"
#include "tests/support/application.h"

#include <gtest/gtest.h>

namespace {

using MSFlexGridLib::CellPainter;
using MSFlexGridLib::MSFlexGrid;

/** A painter that tells how it would paint a cell. */
class OpenPainter : public CellPainter {
  public:
    using CellPainter::CellPainter;

    QStyleOptionViewItem painted(const MSFlexGrid& grid, const QRect& cell) const {
        QStyleOptionViewItem option;
        option.font = grid.font();
        option.rect = cell;
        initStyleOption(&option, grid.model()->index(0, 1));
        return option;
    }
};

struct WithApplication {
    WithApplication() { support::application(); }
};

class NewRow : public testing::Test, private WithApplication {
  protected:
    NewRow() {
        grid.setRows(2);
        grid.setTextMatrix(1, 0, QStringLiteral("1"));
        grid.setTextMatrix(1, 1, QStringLiteral("Sun, 22 Nov 2026 09:30:00 +0000"));
        grid.setRowNew(1, true);
    }

    /** As many letters of the text as stand before the three dots. */
    static qsizetype lettersShown(const QStyleOptionViewItem& option, const QFont& font) {
        const QString shown =
            QFontMetrics(font).elidedText(option.text, Qt::ElideRight, option.rect.width() - 8);
        return shown.size();
    }

    MSFlexGrid grid{5};
    OpenPainter painter;
};

TEST_F(NewRow, ShowsAsMuchOfALongTextAsAnyOtherRow) {
    for (int width = 60; width < 200; width += 7) {
        const QStyleOptionViewItem option = painter.painted(grid, QRect(0, 0, width, 20));
        ASSERT_TRUE(option.font.bold());
        EXPECT_GE(lettersShown(option, option.font) + 1, lettersShown(option, grid.font())) << width;
    }
}

TEST_F(NewRow, KeepsTheLettersOfATextThatFitsApart) {
    const QStyleOptionViewItem option = painter.painted(grid, QRect(0, 0, 600, 20));
    EXPECT_TRUE(option.font.bold());
    EXPECT_EQ(option.font.letterSpacing(), 0);
}

TEST_F(NewRow, MayHaveAnEmptyCell) {
    grid.setTextMatrix(1, 1, QString());
    EXPECT_EQ(painter.painted(grid, QRect()).font.letterSpacing(), 0);
}

} // namespace
