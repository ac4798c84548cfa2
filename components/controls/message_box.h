#pragma once

#include <QRect>
#include <QString>

#include <functional>

namespace controls {

enum class MessageIcon { None, Exclamation, Question };
enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

/** Everything that defines one message box. */
struct MessageBox {
    QString text;
    QString title;
    MessageIcon icon = MessageIcon::None;
    MessageButtons buttons = MessageButtons::Ok;
    /** What Return answers in a Yes/No box. */
    MessageAnswer defaultAnswer = MessageAnswer::Yes;
    /** What Escape, or closing the box, answers in a Yes/No box: the answer that loses nothing. */
    MessageAnswer closingAnswer = MessageAnswer::No;
    /**
     * Whether a Yes/No box takes a letter without Alt for an answer. Where the user may be writing on when
     * the box opens, none is meant as one.
     */
    bool takesBareLetters = true;
    /** The place on the screen of what the question is about, which the box must not cover; may be empty. */
    QRect leftFree = {};
};

/** Shows the box and waits until the user answers it. The windows handle events meanwhile. */
MessageAnswer showMessageBox(const MessageBox& box);

/** Loads what the first box would have to wait for: what its letters need and the icons of buttons. */
void prepareMessageBoxes();

/** Shows a box with an OK button and no icon. */
void showMessage(const QString& text, const QString& title);

/** What reportError() says: the error's number, and behind an empty line what it means. */
QString textOfError(int errorNumber);

/** Reports an error that no handler has a text of its own for: its number and what it means. */
void reportError(int errorNumber);

/** Replaces the real box by a function, for tests. An empty function restores the real one. */
void replaceMessageBox(std::function<MessageAnswer(const MessageBox&)> standIn);

} // namespace controls
