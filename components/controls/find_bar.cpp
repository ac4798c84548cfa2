#include "components/controls/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextDocument>

namespace controls {

FindBar::FindBar(QPlainTextEdit* box, QWidget* parent) : QWidget(parent), box_(box) {
    auto* label = new QLabel(QStringLiteral("F&ind:"));
    txtFind = new QLineEdit;
    txtFind->setObjectName(QStringLiteral("txtFind"));
    txtFind->setClearButtonEnabled(true);
    label->setBuddy(txtFind);
    cmdNext = new QPushButton(QStringLiteral("&Next"));
    cmdNext->setObjectName(QStringLiteral("cmdNext"));
    cmdPrevious = new QPushButton(QStringLiteral("Pre&vious"));
    cmdPrevious->setObjectName(QStringLiteral("cmdPrevious"));
    lblFound = new QLabel;
    lblFound->setObjectName(QStringLiteral("lblFound"));

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label);
    row->addWidget(txtFind, 1);
    row->addWidget(cmdNext);
    row->addWidget(cmdPrevious);
    row->addWidget(lblFound);

    connect(txtFind, &QLineEdit::returnPressed, this, &FindBar::findNext);
    connect(txtFind, &QLineEdit::textEdited, lblFound, &QLabel::clear);
    connect(cmdNext, &QPushButton::clicked, this, &FindBar::findNext);
    connect(cmdPrevious, &QPushButton::clicked, this, &FindBar::findPrevious);
    hide();
}

void FindBar::open() {
    const QString chosen = box_->textCursor().selectedText();
    // A choice over several lines is no word to look for.
    if (!chosen.isEmpty() && !chosen.contains(QChar::ParagraphSeparator)) {
        txtFind->setText(chosen);
    }
    lblFound->clear();
    show();
    txtFind->setFocus();
    txtFind->selectAll();
}

void FindBar::close() {
    hide();
    box_->setFocus();
}

void FindBar::findNext() {
    find(false);
}

void FindBar::findPrevious() {
    find(true);
}

void FindBar::find(bool backward) {
    const QString wanted = txtFind->text();
    if (wanted.isEmpty()) {
        return;
    }
    const auto direction = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    if (box_->find(wanted, direction)) {
        lblFound->clear();
        return;
    }
    const QTextCursor before = box_->textCursor();
    box_->moveCursor(backward ? QTextCursor::End : QTextCursor::Start);
    if (box_->find(wanted, direction)) {
        lblFound->setText(backward ? QStringLiteral("Went on from the end")
                                   : QStringLiteral("Went on from the start"));
        return;
    }
    box_->setTextCursor(before);
    lblFound->setText(QStringLiteral("Not found"));
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace controls
