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

    /** Rows, the title row included. New ones are blank. */
    int Rows() const { return rowCount() + 1; }

    void setRows(int rows);

    /** The cell's text; empty for a cell never written. \throws RuntimeError 9 outside the grid. */
    QString TextMatrix(int row, int column) const;
    void setTextMatrix(int row, int column, const QString& text);

    /** The current row; -1 when none is chosen. */
    int Row() const;

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
    void paintEvent(QPaintEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles = {}) override;

  private:
    void mustHold(int row, int column) const;

    QList<Qt::Alignment> alignments_;
    bool redraws_ = true;
    /** What is shown of the cells while nothing is redrawn. */
    QPixmap frozen_;
};

} // namespace MSFlexGridLib
