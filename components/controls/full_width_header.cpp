#include "components/controls/full_width_header.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionHeader>

namespace controls {

FullWidthHeader::FullWidthHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
    setSectionsClickable(true);
}

void FullWidthHeader::paintEvent(QPaintEvent* event) {
    QHeaderView::paintEvent(event);
    QStyleOptionHeader beside;
    initStyleOption(&beside);
    beside.rect = viewport()->rect();
    if (isRightToLeft()) {
        beside.rect.setRight(viewport()->width() - length() + offset() - 1);
    } else {
        beside.rect.setLeft(length() - offset());
    }
    if (beside.rect.isEmpty()) {
        return;
    }
    beside.section = count();
    beside.position = QStyleOptionHeader::End;
    QPainter painter(viewport());
    style()->drawControl(QStyle::CE_HeaderSection, &beside, &painter, this);
}

} // namespace controls
