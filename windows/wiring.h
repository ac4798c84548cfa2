#pragma once

#include <QObject>

#include <functional>
#include <utility>

/**
 * Runs a handler. An error that the handler does not trap is shown in a message box, with its number and what
 * it means. The program then goes on. No exception passes through Qt.
 */
void runHandler(const std::function<void()>& handler);

/** Connects a signal to a handler of the window, without the signal's arguments. */
template <class Sender, class Signal, class Window>
void connectHandler(Sender* sender, Signal signal, Window* window, void (Window::*handler)()) {
    QObject::connect(sender, signal, window,
                     [window, handler] { runHandler([window, handler] { (window->*handler)(); }); });
}

/** Makes a control and gives it its own name. */
template <class Control, class... Arguments>
Control* named(const char* name, Arguments&&... arguments) {
    auto* control = new Control(std::forward<Arguments>(arguments)...);
    control->setObjectName(QLatin1String(name));
    return control;
}
