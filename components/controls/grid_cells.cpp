#include "components/controls/grid_cells.h"

#include "platform/reading_order.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace MSFlexGridLib {

bool CellPainter::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                            const QModelIndex& index) {
    if (event->type() == QEvent::ToolTip &&
        sizeHint(option, index).width() <= view->visualRect(index).width()) {
        QToolTip::hideText();
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

void CellPainter::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    // Spaces that pad a cell to its width are not worth three dots where the column is narrower.
    while (option->text.endsWith(u' ')) {
        option->text.chop(1);
    }
    if (index.siblingAtColumn(0).data(kNewRole).toBool()) {
        option->font.setBold(true);
        option->fontMetrics = QFontMetrics(option->font);
    }
    // The chosen row is seen as well where another window has the keyboard.
    option->state |= QStyle::State_Active;
    if (option->direction == Qt::RightToLeft) {
        option->text = platform::inItsOwnOrder(option->text);
    }
    // A row is one line high: what hangs from its top and what is centred stand on one line.
    option->displayAlignment = (option->displayAlignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
}

QVariant Cell::data(int role) const {
    if (role == Qt::AccessibleTextRole) {
        // Nobody wants to hear of spaces that only pad the text.
        return text().trimmed();
    }
    if (role != Qt::ToolTipRole) {
        return QTableWidgetItem::data(role);
    }
    // Spaces that only pad the text are no news. Marked as rich text, or the signs that escape it would be
    // seen.
    return QStringLiteral("<p>") + text().trimmed().toHtmlEscaped() + QStringLiteral("</p>");
}

} // namespace MSFlexGridLib
