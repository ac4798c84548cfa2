#include "components/controls/grid_cells.h"

#include "platform/reading_order.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace MSFlexGridLib {

namespace {

/**
 * The font in bold. A text that is too wide for its cell gets its letters so close that the cell shows as
 * much of it in bold as otherwise.
 */
QFont boldFor(const QFont& plain, const QString& text, qreal cellWidth) {
    QFont bold = plain;
    bold.setBold(true);
    const qreal boldWidth = QFontMetricsF(bold).horizontalAdvance(text);
    if (!text.isEmpty() && boldWidth > cellWidth) {
        const qreal tooWide = boldWidth - QFontMetricsF(plain).horizontalAdvance(text);
        bold.setLetterSpacing(QFont::AbsoluteSpacing, -tooWide / static_cast<qreal>(text.size()));
    }
    return bold;
}

} // namespace

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
    // In a narrow column, the spaces that pad a text would otherwise make it end in three dots.
    while (option->text.endsWith(u' ')) {
        option->text.chop(1);
    }
    if (index.siblingAtColumn(0).data(kNewRole).toBool()) {
        constexpr int margins = 8;
        option->font = boldFor(option->font, option->text, option->rect.width() - margins);
        option->fontMetrics = QFontMetrics(option->font);
    }
    // The chosen row is as easy to see when another window is active.
    option->state |= QStyle::State_Active;
    if (option->direction == Qt::RightToLeft) {
        option->text = platform::inItsOwnOrder(option->text);
    }
    // A row is one line high. Without this, texts aligned to the top and centred texts would differ in
    // height.
    option->displayAlignment = (option->displayAlignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
}

QVariant Cell::data(int role) const {
    if (role == Qt::AccessibleTextRole) {
        // A screen reader should not read the spaces that only pad the text.
        return text().trimmed();
    }
    if (role != Qt::ToolTipRole) {
        return QTableWidgetItem::data(role);
    }
    // Without the spaces that only pad the text. The tag marks it as rich text, or the escapes would be
    // shown.
    return QStringLiteral("<p>") + text().trimmed().toHtmlEscaped() + QStringLiteral("</p>");
}

} // namespace MSFlexGridLib
