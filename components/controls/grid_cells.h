#pragma once

#include <QStyledItemDelegate>
#include <QTableWidgetItem>

namespace MSFlexGridLib {

/** The role, in the first cell of a row, that tells whether the row is new. */
inline constexpr int kNewRole = Qt::UserRole;

/** How a grid shows its cells. */
class CellPainter : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /**
     * Paints what the style paints, with less work: a text that fits is laid out once instead of three times,
     * and one that is too wide twice instead of four times.
     */
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    /** Shows a tool tip only for a text that the column cuts off. */
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

/** One cell. Its tool tip has the whole text, since a column may be too narrow for it. */
class Cell : public QTableWidgetItem {
  public:
    QVariant data(int role) const override;
};

} // namespace MSFlexGridLib
