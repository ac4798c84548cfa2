#include "components/controls/msflexgrid.h"

#include "components/controls/full_width_header.h"
#include "components/controls/grid_cells.h"
#include "components/controls/resting_palette.h"
#include "platform/runtime_error.h"

#include <QAccessible>
#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace MSFlexGridLib {

MSFlexGrid::MSFlexGrid(int columns, QWidget* parent)
    : QTableWidget(1, columns, parent), alignments_(columns, Qt::AlignLeft | Qt::AlignVCenter) {
    setPalette(controls::sameWhileResting(palette()));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setItemDelegate(new CellPainter(this));
    setHorizontalHeader(new controls::FullWidthHeader(this));
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + fontMetrics().height() / 2);
    // Tab leaves the grid. The arrow keys move within it.
    setTabKeyNavigation(false);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setHorizontalHeaderLabels(QStringList(columns, QString()));
}

void MSFlexGrid::mustHold(int row, int column) const {
    if (row < 0 || row >= Rows() || column < 0 || column >= columnCount()) {
        throw platform::RuntimeError(platform::errors::SubscriptOutOfRange);
    }
}

void MSFlexGrid::setRows(int rows) {
    setRowCount(rows - 1);
}

QString MSFlexGrid::TextMatrix(int row, int column) const {
    mustHold(row, column);
    const QTableWidgetItem* cell = row == 0 ? horizontalHeaderItem(column) : item(row - 1, column);
    return cell == nullptr ? QString() : cell->text();
}

void MSFlexGrid::setTextMatrix(int row, int column, const QString& text) {
    mustHold(row, column);
    if (row == 0) {
        horizontalHeaderItem(column)->setText(text);
        return;
    }
    if (QTableWidgetItem* const written = item(row - 1, column)) {
        written->setText(text);
        return;
    }
    // The cell is filled before it is in the grid, which is notified of every change of its cells.
    auto* const cell = new Cell;
    cell->setTextAlignment(alignments_.at(column));
    cell->setText(text);
    setItem(row - 1, column, cell);
}

// While redrawing is off, the changes need no repaint, since it would show the old picture. Screen readers
// are notified in any case.
void MSFlexGrid::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                             const QList<int>& roles) {
    if (redraws_ || QAccessible::isActive()) {
        QTableWidget::dataChanged(topLeft, bottomRight, roles);
    }
}

// Painting goes on, but with a picture of the cells. Without updates, a widget that is shown, uncovered or
// made larger would show nothing, or what was on the screen before it.
void MSFlexGrid::setRedraw(bool on) {
    if (on == redraws_) {
        return;
    }
    frozen_ = !on && isVisible() ? viewport()->grab() : QPixmap();
    redraws_ = on;
    viewport()->update();
}

// The grid does not turn grey while it is disabled, as during an opening, so that its texts stay readable.
void MSFlexGrid::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        // This causes another PaletteChange, unless the palette is the same as before.
        setPalette(controls::sameWhileResting(palette()));
    }
    QTableWidget::changeEvent(event);
}

void MSFlexGrid::paintEvent(QPaintEvent* event) {
    if (redraws_) {
        QTableWidget::paintEvent(event);
        paintBesideColumns();
        paintFocus();
        return;
    }
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().base());
    if (!frozen_.isNull()) {
        painter.drawPixmap(0, 0, frozen_);
    }
}

// Columns keep their widths when the grid grows, so the rows are painted on beside them, up to its edge.
void MSFlexGrid::paintBesideColumns() {
    const int last = columnCount() - 1;
    QRect beside = viewport()->rect();
    if (isRightToLeft()) {
        beside.setRight(columnViewportPosition(last) - 1);
    } else {
        beside.setLeft(columnViewportPosition(last) + columnWidth(last));
    }
    if (beside.isEmpty()) {
        return;
    }
    QPainter painter(viewport());
    const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    for (int row = std::max(rowAt(0), 0); row < rowCount(); ++row) {
        const int top = rowViewportPosition(row);
        if (top > beside.bottom()) {
            break;
        }
        const bool chosen = selectionModel()->isSelected(model()->index(row, last));
        const auto ground = chosen         ? QPalette::Highlight
                            : row % 2 != 0 ? QPalette::AlternateBase
                                           : QPalette::Base;
        painter.fillRect(QRect(beside.left(), top, beside.width(), rowHeight(row)),
                         palette().brush(group, ground));
    }
}

// Qt repaints the cells of a changed selection, but not the room beside the columns.
void MSFlexGrid::selectionChanged(const QItemSelection& chosen, const QItemSelection& before) {
    QTableWidget::selectionChanged(chosen, before);
    viewport()->update();
}

void MSFlexGrid::paintFocus() {
    if (!hasFocus()) {
        return;
    }
    // The style's own focus frame would tint all rows.
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Active, QPalette::Highlight));
    painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
}

// Qt scrolls by moving the picture on the screen, which would move the focus frame along.
void MSFlexGrid::scrollContentsBy(int right, int down) {
    QTableWidget::scrollContentsBy(right, down);
    if (hasFocus()) {
        viewport()->update();
    }
}

QModelIndex MSFlexGrid::moveCursor(CursorAction action, Qt::KeyboardModifiers held) {
    const QModelIndex now = currentIndex();
    const bool fromNone = !now.isValid();
    const int column = std::max(now.column(), 0);
    if (action == MoveHome || (fromNone && (action == MoveDown || action == MovePageDown))) {
        return model()->index(0, column);
    }
    if (action == MoveEnd || (fromNone && (action == MoveUp || action == MovePageUp))) {
        return model()->index(rowCount() - 1, column);
    }
    return fromNone ? QModelIndex() : QTableWidget::moveCursor(action, held);
}

QItemSelectionModel::SelectionFlags MSFlexGrid::selectionCommand(const QModelIndex& index,
                                                                 const QEvent* /*event*/) const {
    if (!index.isValid() || selectionMode() == NoSelection) {
        return QItemSelectionModel::NoUpdate;
    }
    return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

int MSFlexGrid::Row() const {
    const QModelIndex now = currentIndex();
    return now.isValid() && selectionModel()->isSelected(now) ? now.row() + 1 : -1;
}

void MSFlexGrid::chooseNone() {
    selectionModel()->clear();
}

void MSFlexGrid::setRowNew(int row, bool isNew) {
    if (QTableWidgetItem* const cell = item(row - 1, 0)) {
        cell->setData(kNewRole, isNew);
        viewport()->update();
    }
}

bool MSFlexGrid::isRowNew(int row) const {
    const QTableWidgetItem* const cell = item(row - 1, 0);
    return cell != nullptr && cell->data(kNewRole).toBool();
}

void MSFlexGrid::showRow(int row) {
    scrollTo(model()->index(row - 1, std::max(currentIndex().column(), 0)));
}

QRect MSFlexGrid::placeOfRow(int row) const {
    QRect place = viewport()->rect();
    place.setTop(rowViewportPosition(row - 1));
    place.setHeight(rowHeight(row - 1));
    place &= viewport()->rect();
    return {viewport()->mapToGlobal(place.topLeft()), place.size()};
}

void MSFlexGrid::Clear() {
    clearContents();
    setHorizontalHeaderLabels(QStringList(columnCount(), QString()));
}

void MSFlexGrid::RemoveItem(int row) {
    if (row < 1 || row >= Rows()) {
        throw platform::RuntimeError(platform::errors::SubscriptOutOfRange);
    }
    removeRow(row - 1);
}

void MSFlexGrid::setHighLight(int mode) {
    setSelectionMode(mode == 0 ? QAbstractItemView::NoSelection : QAbstractItemView::SingleSelection);
    if (mode == 0) {
        chooseNone();
    }
}

int MSFlexGrid::usableWidth() const {
    constexpr int roundingOfFiveColumns = 3;
    return width() - 2 * frameWidth() - verticalScrollBar()->sizeHint().width() - roundingOfFiveColumns;
}

void MSFlexGrid::setColAlignment(int column, int code) {
    alignments_[column] = Qt::AlignLeft | (code == 1 ? Qt::AlignVCenter : Qt::AlignTop);
    for (int row = 0; row < rowCount(); ++row) {
        if (QTableWidgetItem* cell = item(row, column)) {
            cell->setTextAlignment(alignments_.at(column));
        }
    }
}

} // namespace MSFlexGridLib
