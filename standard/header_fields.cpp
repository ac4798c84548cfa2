#include "standard/header_fields.h"

#include <algorithm>

namespace standard {

namespace {
bool isBlank(char character) noexcept {
    return character == ' ' || character == '\t';
}

char lower(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/** Where the name of a field ends: at its colon, or at the blanks before it. Nothing for any other line. */
std::optional<std::size_t> endOfName(std::string_view line) {
    const auto isOfName = [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return code > ' ' && code < 0x7F && code != ':';
    };
    const auto end = std::find_if_not(line.begin(), line.end(), isOfName);
    const auto colon = std::find_if_not(end, line.end(), isBlank);
    if (end == line.begin() || colon == line.end() || *colon != ':') {
        return std::nullopt;
    }
    return static_cast<std::size_t>(end - line.begin());
}

/** Lines that mailboxes in one file have before a header, quoted or not. */
bool isOfMailbox(std::string_view line) noexcept {
    return line.starts_with("From ") || line.starts_with(">From ");
}
} // namespace

HeaderFields::HeaderFields(std::string_view bytes, OddLines oddLines) {
    std::size_t start = 0;
    bool afterBlanks = false;
    std::optional<std::size_t> oddFrom;
    while (start < bytes.size()) {
        const std::size_t lineFeed = bytes.find('\n', start);
        const std::size_t next = lineFeed == std::string_view::npos ? bytes.size() : lineFeed + 1;
        const std::string_view line = withoutLineEnd(bytes.substr(start, next - start));
        if (line.empty()) {
            start = next;
            break;
        }
        const bool continues = isBlank(line.front());
        if (!continues && !endOfName(line) && !(start == 0 && isOfMailbox(line))) {
            oddFrom = oddFrom.value_or(start);
            if (oddLines == OddLines::BeginTheBody || afterBlanks) {
                break;
            }
        } else if (next <= kMaximumBytes) {
            takeLine(bytes, start, next);
            oddFrom = continues ? oddFrom : std::nullopt;
        }
        afterBlanks = trimmed(line).empty();
        start = next;
    }
    bodyAt_ = oddFrom.value_or(start);
}

void HeaderFields::takeLine(std::string_view bytes, std::size_t start, std::size_t end) {
    const std::string_view line = bytes.substr(start, end - start);
    if (!isBlank(line.front())) {
        const std::size_t name = endOfName(line).value_or(line.size());
        if (name == line.size()) {
            return;
        }
        const std::size_t colon = line.find(':', name);
        fields_.push_back({line.substr(0, name), line.substr(colon + 1)});
        return;
    }
    // A line that was passed over may stand between a field and what continues it; it is not part of either.
    if (!fields_.empty() && fields_.back().value.data() + fields_.back().value.size() == line.data()) {
        std::string_view& value = fields_.back().value;
        value = {value.data(), value.size() + line.size()};
    }
}

std::optional<std::string> HeaderFields::first(std::string_view name) const {
    const auto found = std::find_if(fields_.begin(), fields_.end(),
                                    [name](const Field& field) { return sameWord(field.name, name); });
    return found == fields_.end() ? std::nullopt : std::optional(unfolded(found->value));
}

std::string unfolded(std::string_view value) {
    value = trimmed(value);
    std::string line;
    line.reserve(value.size());
    while (!value.empty()) {
        const std::size_t end = std::min(value.find('\n'), value.size());
        const std::string_view piece = value.substr(0, end);
        line += end < value.size() && piece.ends_with('\r') ? piece.substr(0, end - 1) : piece;
        value.remove_prefix(std::min(end + 1, value.size()));
    }
    return line;
}

bool sameWord(std::string_view one, std::string_view other) noexcept {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return lower(left) == lower(right); });
}

std::string_view withoutLineEnd(std::string_view line) noexcept {
    line.remove_suffix(line.ends_with('\n') ? 1 : 0);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    return line;
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

} // namespace standard
