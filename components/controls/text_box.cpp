#include "components/controls/text_box.h"

#include "components/controls/room_in_memory.h"
#include "components/controls/shown_breaks.h"
#include "components/controls/shown_lines.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "platform/while_true.h"

#include <QFontDatabase>
#include <QLabel>
#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <utility>

namespace controls {

namespace {
constexpr QChar kLineSeparator(0x2028);

/** A fixed-width font, since authors line up their mail in columns. Its size is the window's. */
QFont fontOfMail() {
    QFont font;
    font.setFamilies(QFontDatabase::systemFont(QFontDatabase::FixedFont).families());
    font.setStyleHint(QFont::Monospace);
    return font;
}

/** The font family of the program's other texts. */
QFont fontOfNotes() {
    QFont font;
    font.setFamilies(QFont().families());
    return font;
}
} // namespace

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent), lblNotShown_(new QLabel(this)) {
    setEncoder(platform::toBytes);
    setFont(fontOfMail());
    lblNotShown_->setFont(fontOfNotes());
    lblNotShown_->setObjectName(QStringLiteral("lblNotShown"));
    lblNotShown_->setTextFormat(Qt::PlainText);
    lblNotShown_->setWordWrap(true);
    lblNotShown_->setAutoFillBackground(true);
    lblNotShown_->setMargin(fontMetrics().averageCharWidth() / 2);
    lblNotShown_->hide();
    filler_.setInterval(0);
    connect(&filler_, &QTimer::timeout, this, &TextBox::fillFurther);
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int position, int /*charactersRemoved*/, int charactersAdded) {
                if (!filling_) {
                    noteChange(position, charactersAdded);
                }
            });
}

void TextBox::setBytes(std::string text) {
    std::vector<std::size_t> starts;
    std::size_t end = 0;
    ShownLines lines(text);
    const auto fits = [&] { return starts.size() < kMostShownLines && end < kMostShownBytes; };
    // The empty line after the last line end has no bytes, so it is always shown.
    while (lines.hasNext() && (fits() || end == text.size())) {
        starts.push_back(end);
        end += lines.next().size();
    }
    original_ = std::move(text);
    lineStarts_ = std::move(starts);
    shownEnd_ = end;
    if (!filler_.isActive()) {
        whenFilled_ = textInteractionFlags();
    }
    {
        const platform::WhileTrue filling(filling_);
        document()->setUndoRedoEnabled(false);
        clear();
    }
    untouched_ = true;
    filledLines_ = 0;
    tellWhatIsNotShown();
    setTextInteractionFlags(whenFilled_ & ~Qt::TextInteractionFlags(Qt::TextEditable));
    fillFurther();
    if (isFilling()) {
        filler_.start();
    }
}

/** Also called by a timer, so it must not throw. */
void TextBox::fillFurther() {
    if (platform::errorNumberOf([this] { fill(); }) != 0) {
        showNoMore();
    }
    if (!isFilling()) {
        endFilling();
    }
}

void TextBox::fill() {
    // The document doubles its memory when that is full.
    constexpr std::size_t memoryPerShownByte = 4;
    mustHaveRoomFor(memoryPerShownByte * std::min(kMostShownBytes, shownEnd_) + kPieceBytes);
    QString piece;
    std::size_t filled = filledLines_;
    for (std::size_t bytes = 0; filled < lineStarts_.size() && bytes < kPieceBytes; ++filled) {
        if (filled > 0) {
            piece += lineEnd(line(filled - 1)).empty() ? kShownBreak : QChar(u'\n');
        }
        piece += shownLine(line(filled));
        bytes += line(filled).size() + 1;
    }
    {
        const platform::WhileTrue filling(filling_);
        QTextCursor end(document());
        end.movePosition(QTextCursor::End);
        insertShown(end, piece);
    }
    if (std::exchange(filledLines_, filled) == 0) {
        moveCursor(QTextCursor::Start);
    }
}

/** Stops filling: what has not appeared yet counts as too much to be shown. */
void TextBox::showNoMore() {
    if (isFilling()) {
        shownEnd_ = lineStarts_[filledLines_];
    }
    // An empty box has one line.
    filledLines_ = std::max<std::size_t>(filledLines_, 1);
    lineStarts_.resize(filledLines_);
    tellWhatIsNotShown();
}

void TextBox::endFilling() {
    filler_.stop();
    document()->setUndoRedoEnabled(true);
    setTextInteractionFlags(whenFilled_);
    untouchedAtTop_ = untouchedAtBottom_ = lineStarts_.size();
    if (Filled) {
        Filled();
    }
}

void TextBox::tellWhatIsNotShown() {
    const QString note =
        bytesNotShown() == 0
            ? QString()
            : QStringLiteral("The last %1 bytes of this text are not shown. They stay part of it: it is "
                             "forwarded, sent and printed whole.")
                  .arg(bytesNotShown());
    lblNotShown_->setText(note);
    lblNotShown_->setHidden(note.isEmpty());
    setAccessibleDescription(note);
    placeNote();
}

void TextBox::placeNote() {
    const int height = lblNotShown_->text().isEmpty() ? 0 : lblNotShown_->heightForWidth(viewport()->width());
    setViewportMargins(0, 0, 0, height);
    const QRect text = viewport()->geometry();
    lblNotShown_->setGeometry(text.left(), text.bottom() + 1, text.width(), height);
}

void TextBox::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    placeNote();
}

void TextBox::noteChange(int position, int charactersAdded) {
    const auto lineOf = [this](int at) {
        const QTextBlock block = document()->findBlock(at);
        return static_cast<std::size_t>(block.isValid() ? block.blockNumber() : document()->blockCount() - 1);
    };
    const auto lines = static_cast<std::size_t>(document()->blockCount());
    untouched_ = false;
    untouchedAtTop_ = std::min(untouchedAtTop_, lineOf(position));
    untouchedAtBottom_ = std::min(untouchedAtBottom_, lines - 1 - lineOf(position + charactersAdded));
}

std::string_view TextBox::line(std::size_t number) const {
    const std::size_t end = number + 1 < lineStarts_.size() ? lineStarts_[number + 1] : shownEnd_;
    return std::string_view(original_).substr(lineStarts_[number], end - lineStarts_[number]);
}

std::string TextBox::typed(const QString& text) const {
    QString lines = text;
    return encoder_(lines.replace(kLineSeparator, QStringLiteral("\r\n")));
}

std::string TextBox::bytes() const {
    if (untouched_) {
        return original_;
    }
    const auto lines = static_cast<std::size_t>(document()->blockCount());
    const std::size_t bottom = untouchedAtBottom_;
    // The changed lines follow the untouched ones at the top, so the original is kept up to the first of
    // them.
    std::string text = original_.substr(0, lineStarts_.at(untouchedAtTop_));
    QTextBlock block = document()->findBlockByNumber(static_cast<int>(untouchedAtTop_));
    for (std::size_t number = untouchedAtTop_; number < lines - bottom; ++number, block = block.next()) {
        text += typed(block.text());
        if (number + 1 < lines && !continuesLine(block.next())) {
            text += "\r\n";
        }
    }
    if (bottom > 0) {
        return text += std::string_view(original_).substr(lineStarts_[lineStarts_.size() - bottom]);
    }
    if (bytesNotShown() > 0) {
        // More text follows the last line in the box, so that line keeps its line end.
        text += lineEnd(line(lineStarts_.size() - 1));
    }
    return text += std::string_view(original_).substr(shownEnd_);
}

QString TextBox::shownText() const {
    const std::string held = untouched_ ? std::string() : bytes();
    if (!untouched_) {
        return platform::fromBytes(held);
    }
    QString text;
    text.reserve(static_cast<qsizetype>(original_.size()));
    for (ShownLines lines(original_); lines.hasNext();) {
        const std::string_view whole = lines.next();
        text += shownLine(whole) + QLatin1String(lineEnd(whole));
    }
    return text;
}

QString TextBox::chosenText() const {
    const QTextCursor cursor = textCursor();
    return textBetween(*document(), cursor.selectionStart(), cursor.selectionEnd());
}

void TextBox::showAtNormalSize() {
    setFont(fontOfMail());
}

bool TextBox::findText(const QString& wanted, bool backward) {
    const QTextCursor cursor = textCursor();
    const int from = backward ? cursor.selectionStart() : cursor.selectionEnd();
    const QTextCursor found = findShown(*document(), wanted, from, backward);
    if (!found.isNull()) {
        setTextCursor(found);
    }
    return !found.isNull();
}

} // namespace controls
