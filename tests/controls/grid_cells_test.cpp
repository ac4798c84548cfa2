#include "components/controls/grid_cells.h"
#include "components/controls/msflexgrid.h"
#include "tests/support/application.h"

#include <QImage>
#include <QPainter>
#include <QStyle>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

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

    /** The cell as the style paints it. */
    void paintByStyle(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
        QStyleOptionViewItem cell = option;
        initStyleOption(&cell, index);
        option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);
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

struct Cell {
    const char* name;
    QString text;
    int column = 1;
    int width = 200;
    QStyle::State state = QStyle::State_Enabled | QStyle::State_Active;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    bool isNew = false;
};

/** What each cell is to be told apart by in the name of its test. */
void PrintTo(const Cell& cell, std::ostream* stream) {
    *stream << cell.name;
}

class PaintedCell : public testing::TestWithParam<Cell>, private WithApplication {
  protected:
    using Paint = std::function<void(QPainter*, const QStyleOptionViewItem&, const QModelIndex&)>;

    /** The row's height is odd and its place is no corner, so that a line that stands elsewhere shows. */
    QImage painted(const Paint& paint) {
        const Cell& cell = GetParam();
        QImage image(cell.width + 20, 40, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::yellow);
        QPainter ink(&image);
        QStyleOptionViewItem option;
        option.initFrom(&grid);
        option.widget = &grid;
        option.font = grid.font();
        option.rect = QRect(7, 5, cell.width, 27);
        option.state = cell.state;
        option.direction = cell.direction;
        option.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
        option.showDecorationSelected = true;
        paint(&ink, option, grid.model()->index(0, cell.column));
        return image;
    }

    MSFlexGrid grid{5};
    OpenPainter painter;
};

TEST_P(PaintedCell, LooksAsTheStylePaintsIt) {
    grid.setRows(2);
    grid.setTextMatrix(1, GetParam().column, GetParam().text);
    grid.setRowNew(1, GetParam().isNew);
    const QImage byStyle = painted([this](auto... what) { painter.paintByStyle(what...); });
    const QImage byPainter = painted([this](auto... what) { painter.paint(what...); });
    EXPECT_EQ(byPainter, byStyle);
    QImage blank(byStyle.size(), byStyle.format());
    blank.fill(Qt::yellow);
    EXPECT_EQ(byStyle == blank, GetParam().text.isEmpty());
}

constexpr QStyle::State kActive = QStyle::State_Enabled | QStyle::State_Active;
const Cell kCells[] = {
    {"Short", QStringLiteral("ann@example.org")},
    {"Padded", QStringLiteral("ann@example.org        ")},
    {"Empty", QString()},
    {"TooWide", QStringLiteral("A subject that is much wider than any cell of that width"), 1, 90},
    {"TooWideAndChosen", QStringLiteral("A subject that is much wider than its cell"), 1, 90,
     kActive | QStyle::State_Selected},
    {"TooWideRightToLeft", QStringLiteral("A subject that is much wider than its cell"), 1, 90, kActive,
     Qt::RightToLeft},
    {"HebrewTooWide", QStringLiteral("שלום שלום שלום (a) 12 שלום"), 3, 70},
    {"HebrewTooWideRightToLeft", QStringLiteral("שלום שלום שלום (a) 12 שלום"), 3, 70, kActive,
     Qt::RightToLeft},
    {"CombiningTooWide",
     QStringLiteral("e\u0301\u0327e\u0301\u0327e\u0301\u0327e\u0301 \U0001F600\U0001F600 x"), 3, 60},
    {"AsWideAsTheCell", QStringLiteral("Sun, 22 Nov 2026"), 1, 108},
    {"Narrow", QStringLiteral("wide"), 1, 24},
    {"Number", QStringLiteral("17"), 0, 60},
    {"Size", QStringLiteral("(1200 bytes)"), 4},
    {"Chosen", QStringLiteral("Hello"), 3, 200, kActive | QStyle::State_Selected},
    {"ChosenWithFocus", QStringLiteral("Hello"), 3, 200,
     kActive | QStyle::State_Selected | QStyle::State_HasFocus},
    {"Resting", QStringLiteral("Hello"), 3, 200, QStyle::State_None},
    {"RestingAndChosen", QStringLiteral("Hello"), 3, 200, QStyle::State_Selected},
    {"InAnotherWindow", QStringLiteral("Hello"), 3, 200, QStyle::State_Enabled},
    {"New", QStringLiteral("Hello"), 3, 200, kActive, Qt::LeftToRight, true},
    {"NewAndTooWide", QStringLiteral("A subject that is much wider than its cell"), 3, 90, kActive,
     Qt::LeftToRight, true},
    {"RightToLeft", QStringLiteral("Hello"), 3, 200, kActive, Qt::RightToLeft},
    {"HebrewRightToLeft", QStringLiteral("שלום (a) 12"), 3, 200, kActive, Qt::RightToLeft},
    {"Hebrew", QStringLiteral("שלום (a) 12"), 3},
    {"Combining", QStringLiteral("e\u0301\u0327 \U0001F600 \u202E x"), 3},
    {"Tab", QStringLiteral("a\tb"), 3},
    {"TwoLines", QStringLiteral("a\u2028b\nc"), 3},
};
INSTANTIATE_TEST_SUITE_P(AllCells, PaintedCell, testing::ValuesIn(kCells),
                         [](const auto& cell) { return std::string(cell.param.name); });

TEST_F(NewRow, MayHaveAnEmptyCell) {
    grid.setTextMatrix(1, 1, QString());
    EXPECT_EQ(painter.painted(grid, QRect()).font.letterSpacing(), 0);
}

} // namespace
