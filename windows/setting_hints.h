#pragma once

#include <QString>

class QLabel;
class QLineEdit;

// The setup window takes whatever is typed, as the settings file does. A hint tells what it will do.

/** What a switch does with a text that is neither "yes" nor "no"; empty for these two. */
QString hintOfSwitch(const QString& text);

/** What becomes of attachments in a folder whose path has no separator at its end; empty where it has one. */
QString hintOfAttachmentDirectory(const QString& path);

/** A label for hints of that name, hidden until there is one. */
QLabel* makeHint(const QString& name);

/** Shows the hint of what is typed in the label, and gives it to the field for screen readers. */
void keepHint(QLineEdit* field, QLabel* hint, QString (*hintOf)(const QString& text));
