#include "components/controls/find_bar.h"

#include "components/controls/text_box.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace controls {

FindBar::FindBar(TextBox* box, QWidget* parent) : QWidget(parent), box_(box) {
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
    lblFound->hide();

    connect(txtFind, &QLineEdit::returnPressed, this, &FindBar::findNext);
    connect(txtFind, &QLineEdit::textEdited, this, &FindBar::forgetResult);
    connect(cmdNext, &QPushButton::clicked, this, &FindBar::findNext);
    connect(cmdPrevious, &QPushButton::clicked, this, &FindBar::findPrevious);
    box_->Filled = [this] {
        if (waitsBackward_) {
            find(*waitsBackward_);
        }
    };
    hide();
}

void FindBar::open() {
    const QString chosen = box_->chosenText();
    // A selection over several lines is not a text that the user wants to find.
    if (!chosen.isEmpty() && !chosen.contains(u'\n')) {
        txtFind->setText(chosen);
    }
    forgetResult();
    show();
    txtFind->setFocus();
    txtFind->selectAll();
}

void FindBar::close() {
    forgetResult();
    hide();
    box_->setFocus();
}

void FindBar::findNext() {
    find(false);
}

void FindBar::findPrevious() {
    find(true);
}

void FindBar::forgetResult() {
    waitsBackward_.reset();
    lblFound->clear();
    lblFound->hide();
}

void FindBar::find(bool backward) {
    forgetResult();
    const QString wanted = txtFind->text();
    if (wanted.isEmpty()) {
        return;
    }
    if (box_->findText(wanted, backward)) {
        return;
    }
    if (box_->isFilling()) {
        waitsBackward_ = backward;
        tell(QStringLiteral("Waiting for the rest of the text..."));
        return;
    }
    const QTextCursor before = box_->textCursor();
    box_->moveCursor(backward ? QTextCursor::End : QTextCursor::Start);
    if (box_->findText(wanted, backward)) {
        tell(backward ? QStringLiteral("Went on from the end") : QStringLiteral("Went on from the start"));
        return;
    }
    box_->setTextCursor(before);
    tell(box_->bytesNotShown() == 0 ? QStringLiteral("Not found")
                                    : QStringLiteral("Not found in what is shown"));
}

void FindBar::tell(const QString& result) {
    lblFound->setText(result);
    lblFound->show();
}

} // namespace controls
