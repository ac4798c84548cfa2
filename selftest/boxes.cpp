#include "selftest/boxes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include <chrono>
#include <utility>

namespace selftest {

Boxes::Boxes(std::function<void(const QString&)> wrongBox) : wrongBox_(std::move(wrongBox)) {
    constexpr std::chrono::milliseconds often{10};
    // It goes on while a box waits, since a box handles events.
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
    timer_.start(often);
}

void Boxes::look() {
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal == nullptr || !modal->isVisible()) {
        return;
    }
    if (auto* const box = qobject_cast<QMessageBox*>(modal)) {
        answer(*box);
    } else if (auto* const dialog = qobject_cast<QFileDialog*>(modal)) {
        answer(*dialog);
    } else {
        wrongBox_(modal->windowTitle());
        modal->close();
    }
}

void Boxes::answer(QMessageBox& box) {
    const QString text = box.text();
    if (due_.empty() || due_.front().text != text) {
        wrongBox_(text);
        box.close();
        return;
    }
    const bool yes = due_.front().answer == Answer::Yes;
    QAbstractButton* const button = box.button(yes ? QMessageBox::Yes : QMessageBox::Ok);
    if (button == nullptr) {
        wrongBox_(text + (yes ? QStringLiteral(" (without Yes)") : QStringLiteral(" (without OK)")));
        box.close();
        return;
    }
    due_.pop_front();
    button->click();
}

void Boxes::answer(QFileDialog& dialog) {
    if (fileToChoose_.isEmpty()) {
        wrongBox_(dialog.windowTitle());
        dialog.close();
        return;
    }
    dialog.selectFile(std::exchange(fileToChoose_, {}));
    static_cast<QDialog&>(dialog).accept();
}

QString Boxes::takeMissing() {
    QStringList missing;
    for (const Due& due : std::exchange(due_, {})) {
        missing.append(QStringLiteral("no box says \"%1\"").arg(due.text));
    }
    if (!std::exchange(fileToChoose_, {}).isEmpty()) {
        missing.append(QStringLiteral("no dialog asks for a file"));
    }
    return missing.join(QStringLiteral(", "));
}

} // namespace selftest
