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

    /** Rows, the title row included. New ones are empty. */
    int Rows() const { return rowCount() + 1; }

    void setRows(int rows);

    /** The cell's text; empty for a cell never written. \throws RuntimeError 9 outside the grid. */
    QString TextMatrix(int row, int column) const;
    void setTextMatrix(int row, int column, const QString& text);

    /** The row that a person has chosen, which is marked; -1 when none is. */
    int Row() const;

    /** Nothing is chosen any more. */
    void chooseNone();

    /** A new row is seen in bold letters. */
    void setRowNew(int row, bool isNew);
    bool isRowNew(int row) const;

    /** Brings a data row into view, without choosing it. */
    void showRow(int row);

    /** Where a data row is on the screen; empty when it is out of view. */
    QRect placeOfRow(int row) const;

    /** Empties every cell, the titles included. */
    void Clear();

    /** Takes one data row out. \throws RuntimeError 9 when there is none of that number. */
    void RemoveItem(int row);

    /** Off while many cells are written: the cells stay on the screen as they were, until it is on again. */
    void setRedraw(bool on);

    bool redraws() const noexcept { return redraws_; }

    /** Whether the chosen row is marked: 1 always, 0 never. */
    void setHighLight(int mode);

    /** Width to share among columns, in the grid's own units: room for the scroll bar is kept. */
    int usableWidth() const;

    void setColWidth(int column, int width) { setColumnWidth(column, width); }

    /** 0 is left and top, 1 is left and centred vertically. */
    void setColAlignment(int column, int code);

  protected:
    /** Home and End go to the first and the last row; only a key that names a row chooses one from none. */
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers held) override;

    /** One whole row is chosen, whatever keys are held: what is current is marked. */
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
    /** What is shown of the cells while nothing is redrawn. */
    QPixmap frozen_;
};

} // namespace MSFlexGridLib
