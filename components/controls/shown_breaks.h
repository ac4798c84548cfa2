#pragma once

#include <QString>
#include <QStringView>
#include <QTextCursor>

class QKeyEvent;
class QTextBlock;
class QTextDocument;

namespace controls {

// A line that is too long is shown on several blocks of a document. The breaks between them are for showing
// only: nothing that is copied, found or sent has a line end there. A break is marked on the separator that
// makes it, so that the mark goes with it and comes back when the deletion is taken back.

/** Whether the block shows more of the line that the block before it shows. */
bool continuesLine(const QTextBlock& block);

/** Inserts a text in place of what the cursor chooses; "\n" ends a line, kShownBreak is a break for showing.
 */
void insertShown(QTextCursor& cursor, QStringView text);

/** The text between two positions of the document, as a clipboard has it: "\n" ends a line. */
QString textBetween(const QTextDocument& document, int start, int end);

/**
 * The first place behind `from` where the text is, the last one before it when searching backward, chosen;
 * null when there is none. Letters count in either case; a place may reach over breaks made for showing.
 */
QTextCursor findShown(QTextDocument& document, const QString& wanted, int from, bool backward);

/** Where the cursor has to be for the key to delete a letter, and not only a break made for showing. */
QTextCursor besideWhatIsDeleted(QTextCursor cursor, const QKeyEvent& key);

/**
 * Makes the break in front of the cursor's block, which a person has just made, the end of a line. Made
 * beside a break for showing it takes its place, so that no empty line stands between them.
 */
void makeLineEnd(QTextCursor cursor);

} // namespace controls
