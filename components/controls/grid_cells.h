#pragma once

#include <QStyledItemDelegate>
#include <QTableWidgetItem>

namespace MSFlexGridLib {

/** Kept in the first cell of a row: whether the row is new. */
inline constexpr int kNewRole = Qt::UserRole;

/** How a grid shows its cells. */
class CellPainter : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /** A text that is seen as a whole needs no tip. */
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

/** One cell. A column may be too narrow for its text, so that the tip has all of it. */
class Cell : public QTableWidgetItem {
  public:
    QVariant data(int role) const override;
};

} // namespace MSFlexGridLib
