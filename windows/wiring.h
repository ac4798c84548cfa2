#pragma once

#include <QObject>

#include <functional>
#include <utility>

/**
 * Runs a handler. An error that it does not trap ends in the generic report, a message box with the number
 * and what it means, after which the program goes on: no exception ever passes through Qt.
 */
void runHandler(const std::function<void()>& handler);

/** Connects a signal to a handler of the window; whatever the signal carries, a handler takes nothing. */
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
