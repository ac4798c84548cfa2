// What keys, the clipboard and dragged texts do in a text box.

#include "components/controls/message_box.h"
#include "components/controls/pasted_text.h"
#include "components/controls/room_in_memory.h"
#include "components/controls/shown_breaks.h"
#include "components/controls/text_box.h"
#include "platform/error_meanings.h"
#include "platform/runtime_error.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextCursor>

#include <memory>
#include <optional>
#include <utility>

namespace controls {

// Qt's own version would copy a line end for each break for showing.
QMimeData* TextBox::createMimeDataFromSelection() const {
    auto plain = std::make_unique<QMimeData>();
    plain->setText(chosenText());
    return plain.release();
}

void TextBox::keyPressEvent(QKeyEvent* event) {
    const bool writable = textInteractionFlags().testFlag(Qt::TextEditable);
    if (writable) {
        if (const QTextCursor beside = besideWhatIsDeleted(textCursor(), *event); beside != textCursor()) {
            setTextCursor(beside);
        }
    }
    QPlainTextEdit::keyPressEvent(event);
    if (writable && event->matches(QKeySequence::InsertParagraphSeparator)) {
        makeLineEnd(textCursor());
    }
}

bool TextBox::canInsertFromMimeData(const QMimeData* source) const {
    bool can = false;
    const int error = platform::errorNumberOf([&] { can = source != nullptr && source->hasText(); });
    return error == 0 && can;
}

// A clipboard may be empty, or offer a text and then give none because the program that owns it has ended.
// Qt's own paste crashes on either.
void TextBox::insertFromMimeData(const QMimeData* source) {
    const int error = platform::errorNumberOf([&] {
        if (textInteractionFlags().testFlag(Qt::TextEditable) && canInsertFromMimeData(source)) {
            takeIn(source->text());
        }
    });
    if (error != 0) {
        tellLater(QString::fromStdString(platform::meaningOf(error)));
    }
}

void TextBox::takeIn(const QString& text) {
    const std::optional<QString> lines = pastableText(text);
    if (!lines) {
        tellLater(QStringLiteral("This is too much to be pasted: at most %1 characters on %2 lines. Please "
                                 "save it in a file and attach the file.")
                      .arg(kMostPastedCharacters)
                      .arg(kMostPastedLines));
        return;
    }
    // A line takes a kilobyte, since the document stores it for Undo, too.
    constexpr std::size_t memoryPerCharacter = 8;
    constexpr std::size_t memoryPerLine = 1'024;
    mustHaveRoomFor(memoryPerCharacter *
                        static_cast<std::size_t>(document()->characterCount() + lines->size()) +
                    memoryPerLine * static_cast<std::size_t>(lines->count(u'\n') + 1));
    QTextCursor cursor = textCursor();
    insertShown(cursor, *lines);
    setTextCursor(cursor);
    ensureCursorVisible();
}

/** Shows the box later: during a drop, the program that the text comes from waits until this one returns. */
void TextBox::tellLater(const QString& text) {
    if (std::exchange(telling_, true)) {
        return;
    }
    const auto tell = [this, text] {
        controls::showMessage(text, QStringLiteral("Brindlewake"));
        telling_ = false;
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

} // namespace controls
