#pragma once

#include <QRect>
#include <QString>

#include <functional>

namespace controls {

enum class MessageIcon { None, Exclamation, Question };
enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

/** Everything a person sees of one message box. */
struct MessageBox {
    QString text;
    QString title;
    MessageIcon icon = MessageIcon::None;
    MessageButtons buttons = MessageButtons::Ok;
    /** What Return answers in a Yes/No box. */
    MessageAnswer defaultAnswer = MessageAnswer::Yes;
    /** What Escape, or closing the box, answers in a Yes/No box: the answer after which nothing is lost. */
    MessageAnswer closingAnswer = MessageAnswer::No;
    /** What the question is about, as a place on the screen that the box does not cover; may be empty. */
    QRect leftFree = {};
};

/** Shows the box and waits, with the windows alive, until it is answered. */
MessageAnswer showMessageBox(const MessageBox& box);

/** Shows a box with an OK button and no icon. */
void showMessage(const QString& text, const QString& title);

/** The generic report of an error that nobody has a text of their own for: its number and what it means. */
void reportError(int errorNumber);

/** Puts a function in the place of the real box, for tests. An empty function brings the real one back. */
void replaceMessageBox(std::function<MessageAnswer(const MessageBox&)> standIn);

} // namespace controls
