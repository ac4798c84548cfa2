#pragma once

#include <QPixmap>
#include <QTableWidget>

namespace MSFlexGridLib {

/**
 * A grid of texts. Row 0 is the fixed row of titles, rows from 1 on are data; columns count from 0. To screen
 * readers it is a table.
 */
class MSFlexGrid : public QTableWidget {
  public:
    explicit MSFlexGrid(int columns, QWidget* parent = nullptr);

    /** The number of rows, the title row included. New rows are empty. */
    int Rows() const { return rowCount() + 1; }

    void setRows(int rows);

    /** The cell's text; empty for a cell never written. \throws RuntimeError 9 outside the grid. */
    QString TextMatrix(int row, int column) const;
    void setTextMatrix(int row, int column, const QString& text);

    /** The row that the user has chosen, which is highlighted; -1 when none is. */
    int Row() const;

    /** Leaves no row chosen. */
    void chooseNone();

    /** A new row is shown in bold. */
    void setRowNew(int row, bool isNew);
    bool isRowNew(int row) const;

    /** Brings a data row into view, without choosing it. */
    void showRow(int row);

    /** Where a data row is on the screen; empty when it is out of view. */
    QRect placeOfRow(int row) const;

    /** Empties every cell, the titles included. */
    void Clear();

    /** Removes one data row. \throws RuntimeError 9 when there is no such row. */
    void RemoveItem(int row);

    /** Switch it off to write many cells: until it is on again, the screen shows the cells as they were. */
    void setRedraw(bool on);

    bool redraws() const noexcept { return redraws_; }

    /** Whether the chosen row is highlighted: 1 always, 0 never. */
    void setHighLight(int mode);

    /** The width to divide among the columns, in layout units: the grid's, less room for the scroll bar. */
    int usableWidth() const;

    void setColWidth(int column, int width) { setColumnWidth(column, width); }

    /** 0 is left and top, 1 is left and centred vertically. */
    void setColAlignment(int column, int code);

  protected:
    /**
     * Home and End go to the first and the last row. When no row is chosen, these, the up and down arrows and
     * the page keys choose one; any other key chooses none.
     */
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers held) override;

    /** The current row is always the chosen one, as a whole, whatever modifier keys are held. */
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event = nullptr) const override;

    void selectionChanged(const QItemSelection& chosen, const QItemSelection& before) override;
    void scrollContentsBy(int right, int down) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles = {}) override;

  private:
    void mustHold(int row, int column) const;
    void paintBesideColumns();
    void paintFocus();

    QList<Qt::Alignment> alignments_;
    bool redraws_ = true;
    /** The picture of the cells that is shown while redrawing is off. */
    QPixmap frozen_;
};

} // namespace MSFlexGridLib
