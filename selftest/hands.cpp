#include "selftest/hands.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFile>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QTimer>

#include <chrono>

namespace selftest {

namespace {
QWidget* visibleWindow(const char* name) {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->objectName() == QLatin1String(name)) {
            return widget;
        }
    }
    return nullptr;
}

void sendMouse(QWidget& target, QEvent::Type type, QPoint place, Qt::MouseButtons held) {
    QMouseEvent event(type, place, target.mapToGlobal(place), Qt::LeftButton, held, Qt::NoModifier);
    QApplication::sendEvent(&target, &event);
}

/** The place of the row's second cell in the list's inside. */
QPoint placeOf(QTableWidget& list, int row) {
    require(list.isEnabled() && row < list.rowCount(), QStringLiteral("the list has no row %1").arg(row + 1));
    const QModelIndex cell = list.model()->index(row, 1);
    list.scrollTo(cell);
    return list.visualRect(cell).center();
}
} // namespace

void require(bool isSo, const QString& otherwise) {
    if (!isSo) {
        throw Failure(otherwise);
    }
}

void requireText(const QString& what, const QString& text, const QString& wanted) {
    require(text == wanted, QStringLiteral("%1 is \"%2\" instead of \"%3\"").arg(what, text, wanted));
}

QWidget& window(const char* name) {
    QWidget* const found = visibleWindow(name);
    require(found != nullptr, QStringLiteral("the window %1 is not shown").arg(QLatin1String(name)));
    return *found;
}

bool isShown(const char* name) {
    return visibleWindow(name) != nullptr;
}

void type(const char* windowName, const char* field, const QString& text) {
    auto& into = control<QWidget>(windowName, field);
    require(into.isEnabled(), QStringLiteral("%1 is disabled").arg(QLatin1String(field)));
    if (auto* const line = qobject_cast<QLineEdit*>(&into)) {
        line->selectAll();
        line->insert(text);
    } else if (auto* const box = qobject_cast<QPlainTextEdit*>(&into)) {
        box->selectAll();
        box->insertPlainText(text);
    } else {
        throw Failure(QStringLiteral("%1 is no field").arg(QLatin1String(field)));
    }
}

void press(const char* windowName, const char* button) {
    auto& pressed = control<QAbstractButton>(windowName, button);
    require(pressed.isVisible() && pressed.isEnabled(),
            QStringLiteral("%1 cannot be pressed").arg(QLatin1String(button)));
    pressed.click();
}

void clickRow(QTableWidget& list, int row) {
    const QPoint place = placeOf(list, row);
    sendMouse(*list.viewport(), QEvent::MouseButtonPress, place, Qt::LeftButton);
    sendMouse(*list.viewport(), QEvent::MouseButtonRelease, place, Qt::NoButton);
}

void openRow(QTableWidget& list, int row) {
    clickRow(list, row);
    sendMouse(*list.viewport(), QEvent::MouseButtonDblClick, placeOf(list, row), Qt::LeftButton);
}

void waitUntil(const std::function<bool()>& isSo, const QString& otherwise) {
    constexpr std::chrono::seconds patience{10};
    constexpr std::chrono::milliseconds often{5};
    const QDeadlineTimer deadline(patience);
    while (!isSo()) {
        require(!deadline.hasExpired(), otherwise);
        QEventLoop loop;
        QTimer::singleShot(often, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

std::string bytesOf(const std::string& path) {
    QFile file(QString::fromStdString(path));
    require(file.open(QIODevice::ReadOnly),
            QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    return file.readAll().toStdString();
}

} // namespace selftest
