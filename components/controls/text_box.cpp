#include "components/controls/text_box.h"

#include "platform/text.h"
#include "platform/while_true.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <utility>

namespace controls {

namespace {
constexpr QChar kLineSeparator(0x2028);

bool continuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/** Where the first shown line of the text ends, its line end included. */
std::size_t endOfLine(std::string_view text) {
    constexpr std::size_t longestCharacter = 4;
    const std::string_view head = text.substr(0, TextBox::kLongestShownLine);
    const std::size_t end = head.find_first_of("\r\n");
    if (end != std::string_view::npos) {
        return end + (text.substr(end).starts_with("\r\n") ? 2 : 1);
    }
    std::size_t cut = head.size();
    while (cut < text.size() && continuesCharacter(text[cut]) && head.size() - cut < longestCharacter) {
        --cut;
    }
    // What has no start of a character there is no UTF-8.
    return cut < text.size() && continuesCharacter(text[cut]) ? head.size() : cut;
}

std::vector<std::size_t> startsOfLines(std::string_view text) {
    std::vector<std::size_t> starts{0};
    for (std::size_t end = 0; end < text.size();) {
        end += endOfLine(text.substr(end));
        // Behind a last line end there is one more line, which is empty.
        if (end < text.size() || text.ends_with('\n') || text.ends_with('\r')) {
            starts.push_back(end);
        }
    }
    return starts;
}

std::string_view withoutLineEnd(std::string_view line) {
    while (line.ends_with('\n') || line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

/** A line as the box can hold it: what it would take for a line's end is shown by a sign. */
QString shown(std::string_view line) {
    QString text = platform::fromBytes(withoutLineEnd(line));
    for (QChar& letter : text) {
        const char16_t code = letter.unicode();
        if (code == 0 || code == 0x2029 || code == 0xFDD0 || code == 0xFDD1) {
            letter = QChar::ReplacementCharacter;
        }
    }
    return text;
}

std::string typed(const QString& text) {
    QString lines = text;
    return platform::toBytes(lines.replace(kLineSeparator, QStringLiteral("\r\n")));
}
} // namespace

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent) {
    filler_.setInterval(0);
    connect(&filler_, &QTimer::timeout, this, &TextBox::fill);
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int position, int /*charactersRemoved*/, int charactersAdded) {
                if (!filling_) {
                    noteChange(position, charactersAdded);
                }
            });
}

void TextBox::setBytes(std::string text) {
    original_ = std::move(text);
    lineStarts_ = startsOfLines(original_);
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
    setTextInteractionFlags(whenFilled_ & ~Qt::TextInteractionFlags(Qt::TextEditable));
    fill();
    if (isFilling()) {
        filler_.start();
    }
}

void TextBox::fill() {
    QString piece;
    const bool first = filledLines_ == 0;
    for (std::size_t bytes = 0; isFilling() && bytes < kPieceBytes; ++filledLines_) {
        if (filledLines_ > 0) {
            piece += u'\n';
        }
        piece += shown(line(filledLines_));
        bytes += line(filledLines_).size() + 1;
    }
    {
        const platform::WhileTrue filling(filling_);
        QTextCursor end(document());
        end.movePosition(QTextCursor::End);
        end.insertText(piece);
    }
    if (first) {
        moveCursor(QTextCursor::Start);
    }
    if (!isFilling()) {
        filler_.stop();
        document()->setUndoRedoEnabled(true);
        setTextInteractionFlags(whenFilled_);
        untouchedAtTop_ = untouchedAtBottom_ = lineStarts_.size();
    }
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
    const std::size_t end = number + 1 < lineStarts_.size() ? lineStarts_[number + 1] : original_.size();
    return std::string_view(original_).substr(lineStarts_[number], end - lineStarts_[number]);
}

std::string TextBox::bytes() const {
    if (untouched_) {
        return original_;
    }
    const auto lines = static_cast<std::size_t>(document()->blockCount());
    const std::size_t bottom = untouchedAtBottom_;
    // A line that was changed stands behind those at the top, so this is where the first of them starts.
    std::string text = original_.substr(0, lineStarts_.at(untouchedAtTop_));
    QTextBlock block = document()->findBlockByNumber(static_cast<int>(untouchedAtTop_));
    for (std::size_t number = untouchedAtTop_; number < lines - bottom; ++number, block = block.next()) {
        text += typed(block.text());
        if (number + 1 < lines) {
            text += "\r\n";
        }
    }
    if (bottom > 0) {
        text += std::string_view(original_).substr(lineStarts_[lineStarts_.size() - bottom]);
    }
    return text;
}

QString TextBox::shownText() const {
    if (!untouched_) {
        return platform::fromBytes(bytes());
    }
    QString text;
    text.reserve(static_cast<qsizetype>(original_.size()));
    for (std::size_t number = 0; number < lineStarts_.size(); ++number) {
        const std::string_view whole = line(number);
        text += shown(whole) + QLatin1String(whole.substr(withoutLineEnd(whole).size()));
    }
    return text;
}

} // namespace controls
