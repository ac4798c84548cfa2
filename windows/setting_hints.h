#pragma once

#include <QString>

class QLabel;
class QLineEdit;

// The setup window accepts any text, as the settings file does. A hint tells the user what the text will do.

/** Returns what a switch does with a text that is neither "yes" nor "no"; empty for these two. */
QString hintOfSwitch(const QString& text);

/**
 * Returns under which name an attachment is saved when the path has no separator at its end. Empty when it
 * has one, is empty or is a drive alone.
 */
QString hintOfAttachmentDirectory(const QString& path);

/** Returns a label of that object name, hidden until there is a hint to show. */
QLabel* makeHint(const QString& name);

/** Shows the hint for the field's text in the label, and makes it the field's accessible description. */
void keepHint(QLineEdit* field, QLabel* hint, QString (*hintOf)(const QString& text));
