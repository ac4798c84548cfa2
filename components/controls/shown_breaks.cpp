#include "components/controls/shown_breaks.h"

#include "components/controls/shown_lines.h"

#include <QKeyEvent>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace controls {

namespace {
constexpr int kContinuesLine = QTextFormat::UserProperty + 1;

qsizetype letters(const QTextBlock& block) {
    return block.length() - 1; // without the separator
}

/** Returns the block's text, followed by up to `wanted` letters of the same line from the next blocks. */
QString withLettersBehind(const QTextBlock& block, qsizetype wanted) {
    QString text = block.text();
    const qsizetype most = text.size() + wanted;
    for (QTextBlock next = block.next(); text.size() < most && continuesLine(next); next = next.next()) {
        text += QStringView(next.text()).first(std::min(letters(next), most - text.size()));
    }
    return text.replace(QChar::Nbsp, u' ');
}

/** Returns a cursor that selects `count` letters, starting in this block. Breaks for showing do not count. */
QTextCursor choose(QTextBlock block, qsizetype first, qsizetype count) {
    QTextCursor chosen(block);
    chosen.setPosition(block.position() + static_cast<int>(first));
    qsizetype end = first + count;
    while (end > letters(block)) {
        end -= letters(block);
        block = block.next();
    }
    chosen.setPosition(block.position() + static_cast<int>(end), QTextCursor::KeepAnchor);
    return chosen;
}
} // namespace

bool continuesLine(const QTextBlock& block) {
    // QTextBlock::charFormat() is the format of the separator in front of the block.
    return block.isValid() && block.position() > 0 && block.charFormat().boolProperty(kContinuesLine);
}

void insertShown(QTextCursor& cursor, QStringView text) {
    QTextCharFormat continuing;
    continuing.setProperty(kContinuesLine, true);
    cursor.beginEditBlock();
    for (qsizetype end = text.indexOf(kShownBreak); end >= 0; end = text.indexOf(kShownBreak)) {
        cursor.insertText(text.first(end).toString(), QTextCharFormat());
        cursor.insertBlock(QTextBlockFormat(), continuing);
        text = text.sliced(end + 1);
    }
    cursor.insertText(text.toString(), QTextCharFormat());
    cursor.endEditBlock();
}

QString textBetween(const QTextDocument& document, int start, int end) {
    QString text;
    for (QTextBlock block = document.findBlock(start); block.isValid() && block.position() <= end;
         block = block.next()) {
        if (block.position() > start && !continuesLine(block)) {
            text += u'\n';
        }
        const qsizetype first = std::max(start - block.position(), 0);
        const qsizetype behind = std::min<qsizetype>(end - block.position(), letters(block));
        text += QStringView(block.text()).sliced(first, behind - first);
    }
    return text.replace(QChar::LineSeparator, u'\n').replace(QChar::Nbsp, u' ');
}

QTextCursor findShown(QTextDocument& document, const QString& wanted, int from, bool backward) {
    QString text = wanted;
    text.replace(QChar::Nbsp, u' ');
    for (QTextBlock block = document.findBlock(from); block.isValid() && !text.isEmpty();
         block = backward ? block.previous() : block.next()) {
        const QString line = withLettersBehind(block, text.size() - 1);
        const qsizetype own = letters(block);
        qsizetype found = -1;
        if (!backward) {
            found = line.indexOf(text, std::max(from - block.position(), 0), Qt::CaseInsensitive);
        } else if (const auto last = std::min<qsizetype>(from - block.position(), own) - 1; last >= 0) {
            found = line.lastIndexOf(text, last, Qt::CaseInsensitive);
        }
        // A place that begins in the next block is found there.
        if (found >= 0 && found < own) {
            return choose(block, found, text.size());
        }
    }
    return {};
}

QTextCursor besideWhatIsDeleted(QTextCursor cursor, const QKeyEvent& key) {
    const bool forward = key.matches(QKeySequence::Delete) || key.matches(QKeySequence::DeleteEndOfWord) ||
                         key.matches(QKeySequence::DeleteEndOfLine);
    const bool backward = key.key() == Qt::Key_Backspace || key.matches(QKeySequence::DeleteStartOfWord);
    if (cursor.hasSelection()) {
        return cursor;
    }
    while (forward && cursor.atBlockEnd() && continuesLine(cursor.block().next())) {
        cursor.movePosition(QTextCursor::NextBlock);
    }
    while (backward && cursor.atBlockStart() && continuesLine(cursor.block())) {
        cursor.movePosition(QTextCursor::PreviousCharacter);
    }
    return cursor;
}

void makeLineEnd(QTextCursor cursor) {
    const QTextBlock line = cursor.block();
    const QTextBlock before = line.previous();
    const int start = line.position();
    const bool marked = continuesLine(line);
    const bool breakBehind = letters(line) == 0 && continuesLine(line.next());
    const bool breakBefore = letters(before) == 0 && continuesLine(before);
    if (!before.isValid() || !(marked || breakBehind || breakBefore)) {
        return;
    }
    cursor.joinPreviousEditBlock();
    if (marked) {
        cursor.setPosition(start - 1);
        cursor.setPosition(start, QTextCursor::KeepAnchor);
        cursor.setCharFormat(QTextCharFormat());
    }
    if (breakBehind) {
        cursor.setPosition(start);
        cursor.deleteChar();
    }
    if (breakBefore) {
        cursor.setPosition(start - 1);
        cursor.deletePreviousChar();
    }
    cursor.endEditBlock();
}

} // namespace controls
