#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <stdexcept>
#include <string>

class QAbstractButton;
class QTableWidget;

namespace selftest {

/** A step has not gone well. */
class Failure : public std::runtime_error {
  public:
    explicit Failure(const QString& why) : std::runtime_error(why.toStdString()) {}
};

/** What a step needs is not on this computer. */
class NotHere : public std::runtime_error {
  public:
    explicit NotHere(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/** \throws Failure with these words unless it is so. */
void require(bool isSo, const QString& otherwise);

/** \throws Failure unless the text is the wanted one. */
void requireText(const QString& what, const QString& text, const QString& wanted);

/** The visible window of this name. \throws Failure when there is none. */
QWidget& window(const char* name);

bool isShown(const char* window);

/** The control of this name in a visible window. \throws Failure when there is none. */
template <class Control>
Control& control(const char* windowName, const char* name) {
    auto* const found = window(windowName).findChild<Control*>(QLatin1String(name));
    require(found != nullptr,
            QStringLiteral("%1 has no %2").arg(QLatin1String(windowName), QLatin1String(name)));
    return *found;
}

/** Types into a field, in the place of what it holds. \throws Failure when it takes nothing. */
void type(const char* windowName, const char* field, const QString& text);

/** Presses a button and comes back when all that follows is done. \throws Failure when it cannot be pressed.
 */
void press(const char* windowName, const char* button);

/** Opens a row of the list, counted from 0, by a double click. */
void openRow(QTableWidget& list, int row);

/** Chooses a row of the list, counted from 0, by a click. */
void clickRow(QTableWidget& list, int row);

/** Lets the windows work until it is so, for some seconds at most. \throws Failure with these words. */
void waitUntil(const std::function<bool()>& isSo, const QString& otherwise);

/** The bytes of a file. \throws Failure when it cannot be read. */
std::string bytesOf(const std::string& file);

} // namespace selftest
