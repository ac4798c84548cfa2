#include "components/controls/directory_list_box.h"

#include "components/controls/folder_list.h"
#include "platform/reading_order.h"

#include <QKeyEvent>
#include <QStyle>
#include <QStyledItemDelegate>

#include <algorithm>

namespace controls {

namespace {
/** Indents each row by its level. */
class RowPainter : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        // Otherwise a deep path would indent rows beyond the list's edge.
        constexpr int deepestLevel = 8;
        const int level = std::min(index.data(FolderList::LevelRole).toInt(), deepestLevel);
        const int step = level * option.fontMetrics.averageCharWidth() * 2;
        QStyleOptionViewItem moved = option;
        moved.rect.adjust(option.direction == Qt::LeftToRight ? step : 0, 0,
                          option.direction == Qt::LeftToRight ? 0 : -step, 0);
        QStyledItemDelegate::paint(painter, moved, index);
    }

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->direction == Qt::RightToLeft) {
            // Otherwise Qt would show the backslash of "C:\" in front of it.
            option->text = platform::inItsOwnOrder(option->text);
        }
    }
};
} // namespace

DirectoryListBox::DirectoryListBox(QWidget* parent) : QListView(parent), folders_(new FolderList(this)) {
    setModel(folders_);
    setItemDelegate(new RowPainter(this));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformItemSizes(true);
    const int icon = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setIconSize(QSize(icon, icon));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideMiddle);
}

QString DirectoryListBox::path() const {
    return folders_->isOpen() ? pathOf(folders_->place()) : QString();
}

void DirectoryListBox::setPath(const QString& path) {
    const QString before = this->path();
    showFolder(path);
    if (Change && before != this->path()) {
        Change();
    }
}

void DirectoryListBox::open(const QModelIndex& row) {
    if (row.isValid()) {
        showFolder(pathOf(folders_->placeOfRow(row.row())));
        if (Change) {
            Change();
        }
    }
}

void DirectoryListBox::showFolder(const QString& path) {
    Place place = placeOf(path);
    QStringList inside = foldersIn(place);
    folders_->show(std::move(place), std::move(inside));
    const QModelIndex openRow = folders_->index(folders_->openRow());
    setCurrentIndex(openRow);
    scrollTo(openRow, QAbstractItemView::PositionAtCenter);
}

void DirectoryListBox::keyPressEvent(QKeyEvent* event) {
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && folders_->isOpen()) {
        switch (event->key()) {
        case Qt::Key_Backspace:
        case Qt::Key_Left:
            if (folders_->openRow() > 0) {
                Q_EMIT activated(folders_->index(folders_->openRow() - 1));
            }
            return;
        case Qt::Key_Right:
            Q_EMIT activated(currentIndex());
            return;
        default:
            break;
        }
    }
    QListView::keyPressEvent(event);
}

} // namespace controls
