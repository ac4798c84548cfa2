#include "components/smtplib/wire_text.h"

#include <algorithm>

namespace smtplib {

namespace {
bool isContinuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/**
 * The number of bytes before the first CR, LF or NUL. It searches no further than the longest line, so that
 * text full of one of these costs no more than other text.
 */
std::size_t bytesOfRun(std::string_view text) {
    text = text.substr(0, kMaximumTextLineBytes);
    for (const char end : {'\n', '\r', '\0'}) {
        text = text.substr(0, text.find(end));
    }
    return text.size();
}

/** How many bytes of a line that is too long stay before the break. */
std::size_t bytesBeforeBreak(std::string_view line) {
    const std::size_t space = line.substr(0, kMaximumTextLineBytes).find_last_of(" \t");
    if (space != std::string_view::npos) {
        return space + 1;
    }
    constexpr std::size_t longestCharacter = 4;
    std::size_t end = kMaximumTextLineBytes;
    while (isContinuation(line[end]) && kMaximumTextLineBytes - end < longestCharacter) {
        --end;
    }
    // Where no character starts within these bytes, the text is not UTF-8.
    return isContinuation(line[end]) ? kMaximumTextLineBytes : end;
}
} // namespace

std::size_t bytesOfReadyLines(std::string_view text) {
    const std::size_t lastLineFeed = text.rfind('\n');
    if (lastLineFeed == std::string_view::npos) {
        return 0;
    }
    const std::string_view lines = text.substr(0, lastLineFeed + 1);
    if (lines.find('\0') != std::string_view::npos) {
        return 0;
    }
    for (std::string_view rest = lines; !rest.empty();) {
        const std::size_t end = rest.find('\n') - 1;
        if (end > kMaximumTextLineBytes || rest.find('\r') != end) {
            return 0;
        }
        rest.remove_prefix(end + 2);
    }
    return lines.size();
}

void WireText::add(std::string_view piece, std::string& output) {
    if (piece.empty()) {
        return;
    }
    if (!line_.empty() || carriageReturn_) {
        const std::size_t bytes = std::min(piece.find('\n'), piece.size() - 1) + 1;
        addSlowly(piece.substr(0, bytes), output);
        piece.remove_prefix(bytes);
    }
    if (line_.empty() && !carriageReturn_) {
        const std::size_t ready = bytesOfReadyLines(piece);
        output.append(piece.substr(0, ready));
        piece.remove_prefix(ready);
    }
    addSlowly(piece, output);
}

void WireText::addSlowly(std::string_view piece, std::string& output) {
    while (!piece.empty()) {
        if (piece.front() == '\0') {
            piece.remove_prefix(1);
            continue;
        }
        if (carriageReturn_) {
            endLine(output);
            carriageReturn_ = false;
            if (piece.front() == '\n') {
                piece.remove_prefix(1);
                continue;
            }
        }
        const std::size_t run = bytesOfRun(piece);
        addToLine(piece.substr(0, run), output);
        piece.remove_prefix(run);
        if (piece.starts_with('\r')) {
            carriageReturn_ = true;
            piece.remove_prefix(1);
        } else if (piece.starts_with('\n')) {
            endLine(output);
            piece.remove_prefix(1);
        }
    }
}

void WireText::finish(std::string& output) {
    if (carriageReturn_ || !line_.empty()) {
        endLine(output);
        carriageReturn_ = false;
    }
}

void WireText::addToLine(std::string_view run, std::string& output) {
    while (line_.size() + run.size() > kMaximumTextLineBytes) {
        const std::size_t bytes = kMaximumTextLineBytes + 1 - line_.size();
        line_.append(run.substr(0, bytes));
        run.remove_prefix(bytes);
        const std::size_t kept = bytesBeforeBreak(line_);
        output.append(line_, 0, kept);
        output += "\r\n";
        line_.erase(0, kept);
    }
    line_.append(run);
}

void WireText::endLine(std::string& output) {
    output += line_;
    output += "\r\n";
    line_.clear();
}

void DotStuffer::add(std::string_view piece, std::string& output) {
    if (piece.empty()) {
        return;
    }
    const char last = piece.back();
    while (!piece.empty()) {
        // Searches for dots, not line ends: dots are rarer, and an encoded file has none.
        const std::size_t dot = std::min(piece.find('.'), piece.size());
        const bool atStart = dot == 0 ? atLineStart_ : piece[dot - 1] == '\n';
        output.append(piece.substr(0, dot));
        if (dot < piece.size()) {
            output.append(atStart ? ".." : ".");
        }
        atLineStart_ = false;
        piece.remove_prefix(std::min(dot + 1, piece.size()));
    }
    atLineStart_ = last == '\n';
}

} // namespace smtplib
