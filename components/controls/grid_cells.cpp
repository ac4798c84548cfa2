#include "components/controls/grid_cells.h"

#include "platform/reading_order.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

#include <optional>

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

/** Whether the style adds nothing to the text and its background that only the style could paint. */
bool isPlain(const QStyle& style, const QStyleOptionViewItem& cell) {
    constexpr QStyleOptionViewItem::ViewItemFeatures adding = QStyleOptionViewItem::HasCheckIndicator |
                                                              QStyleOptionViewItem::HasDecoration |
                                                              QStyleOptionViewItem::WrapText;
    return style.name() == QStringLiteral("fusion") && !cell.features.testAnyFlags(adding) &&
           !cell.state.testFlag(QStyle::State_HasFocus) && !cell.text.contains(QChar::LineSeparator) &&
           !cell.text.contains(u'\n');
}

QPalette::ColorGroup colorsOf(const QStyleOptionViewItem& cell) {
    if (!cell.state.testFlag(QStyle::State_Enabled)) {
        return QPalette::Disabled;
    }
    return cell.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

/** Where the style puts a cell's text. */
QRect textPlace(const QStyle& style, const QStyleOptionViewItem& cell) {
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, cell.widget) + 1;
    return cell.rect.adjusted(margin, 0, -margin, 0);
}

/** Lays the text out in one line and returns its height; nothing where the line is wider than the place. */
std::optional<int> laidOut(QTextLayout& layout, const QStyleOptionViewItem& cell, int width) {
    QTextOption arrangement(QStyle::visualAlignment(cell.direction, cell.displayAlignment));
    arrangement.setWrapMode(QTextOption::ManualWrap);
    arrangement.setTextDirection(cell.direction);
    layout.setTextOption(arrangement);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(width);
    layout.endLayout();
    if (line.naturalTextWidth() > width) {
        return std::nullopt;
    }
    return static_cast<int>(line.height());
}

} // namespace

void CellPainter::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStyle& style = cell.widget != nullptr ? *cell.widget->style() : *QApplication::style();
    const QRect place = textPlace(style, cell);
    QTextLayout text(cell.text, cell.font);
    std::optional<int> height;
    if (isPlain(style, cell) && !cell.text.isEmpty()) {
        height = laidOut(text, cell, place.width());
        if (!height) {
            text.setText(cell.fontMetrics.elidedText(cell.text, cell.textElideMode, place.width()));
            height = laidOut(text, cell, place.width());
        }
        if (height) {
            cell.text.clear();
        }
    }
    style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    if (height) {
        const QRect line =
            QStyle::alignedRect(cell.direction, cell.displayAlignment, QSize(place.width(), *height), place);
        painter->save();
        painter->setClipRect(cell.rect);
        painter->setPen(cell.palette.color(colorsOf(cell), cell.state.testFlag(QStyle::State_Selected)
                                                               ? QPalette::HighlightedText
                                                               : QPalette::Text));
        text.draw(painter, QPointF(place.x(), line.top()));
        painter->restore();
    }
}

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
