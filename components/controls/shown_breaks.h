#pragma once

#include <QString>
#include <QStringView>
#include <QTextCursor>

class QKeyEvent;
class QTextBlock;
class QTextDocument;

namespace controls {

// A line that is too long is shown in several blocks of a document. The breaks between them are for showing
// only: text that is copied, found or sent has no line end there. The mark of a break is on the block
// separator itself, so it is deleted with the separator and comes back with Undo.

/** Returns whether the block continues the line of the block before it. */
bool continuesLine(const QTextBlock& block);

/** Replaces the cursor's selection by a text. "\n" ends a line, kShownBreak is a break for showing. */
void insertShown(QTextCursor& cursor, QStringView text);

/** Returns the text between two positions of the document, without breaks for showing; "\n" ends a line. */
QString textBetween(const QTextDocument& document, int start, int end);

/**
 * Returns a cursor that selects the first place after `from` where the text is, or the last one before it
 * when searching backward; null when there is none. Case is ignored. A place may extend over breaks for
 * showing.
 */
QTextCursor findShown(QTextDocument& document, const QString& wanted, int from, bool backward);

/** Returns the cursor moved past breaks for showing, so that a key that deletes deletes a letter. */
QTextCursor besideWhatIsDeleted(QTextCursor cursor, const QKeyEvent& key);

/**
 * Makes the break in front of the cursor's block, which the user has just typed, the end of a line. If it is
 * next to a break for showing, it replaces that, so that there is no empty line between them.
 */
void makeLineEnd(QTextCursor cursor);

} // namespace controls
