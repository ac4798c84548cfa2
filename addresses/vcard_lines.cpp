#include "addresses/vcard_lines.h"

#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace addresses {

namespace {
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isFolded(std::string_view line) {
    return !line.empty() && (line.front() == ' ' || line.front() == '\t');
}

/** Where the first of these characters stands outside quotes; the text's size when there is none. */
std::size_t findUnquoted(std::string_view text, std::string_view wanted) {
    bool quoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        quoted = quoted != (text[at] == '"');
        if (!quoted && wanted.find(text[at]) != std::string_view::npos) {
            return at;
        }
    }
    return text.size();
}

std::string withoutQuotes(std::string_view value) {
    std::string plain(value);
    std::erase(plain, '"');
    return plain;
}

CardProperty::Parameter parameterOf(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        return {"TYPE", withoutQuotes(text)};
    }
    return {platform::upperCase(text.substr(0, equals)), withoutQuotes(text.substr(equals + 1))};
}

/** What stands before the value: "group.NAME;PARAMETER=value;..." */
CardProperty headOf(std::string_view head) {
    CardProperty property;
    std::string_view name = head.substr(0, head.find(';'));
    head.remove_prefix(std::min(name.size() + 1, head.size()));
    name.remove_prefix(name.rfind('.') + 1);
    property.name = platform::upperCase(name);
    while (!head.empty()) {
        const std::size_t end = findUnquoted(head, ";");
        property.parameters.push_back(parameterOf(head.substr(0, end)));
        head.remove_prefix(std::min(end + 1, head.size()));
    }
    return property;
}

bool isQuotedPrintable(std::string_view line) {
    const CardProperty property = headOf(line.substr(0, findUnquoted(line, ":")));
    return std::ranges::any_of(property.parameters, [](const CardProperty::Parameter& parameter) {
        return platform::upperCase(parameter.value) == "QUOTED-PRINTABLE";
    });
}

/** RFC 2045 section 6.7, on one line; what is no code stays as it stands. */
std::string fromQuotedPrintable(std::string_view text) {
    constexpr std::size_t codeBytes = 3;
    constexpr int hexadecimal = 16;
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view code = text.substr(at, codeBytes);
        unsigned char byte = 0;
        const auto read = std::from_chars(code.data() + 1, code.data() + code.size(), byte, hexadecimal);
        const bool isCode = code.front() == '=' && code.size() == codeBytes && read.ec == std::errc() &&
                            read.ptr == code.data() + code.size();
        decoded += isCode ? static_cast<char>(byte) : code.front();
        at += isCode ? codeBytes - 1 : 0;
    }
    return decoded;
}
} // namespace

CardLines::CardLines(std::string_view text) : rest_(text) {
    if (rest_.starts_with(kByteOrderMark)) {
        rest_.remove_prefix(kByteOrderMark.size());
    }
}

std::string_view CardLines::takeLine() {
    const std::size_t end = rest_.find('\n');
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

/** Empty for a line that is too long. */
std::string CardLines::takeUnfolded() {
    std::string line(takeLine().substr(0, longestLine + 1));
    const auto append = [&line](std::string_view more) {
        line += more.substr(0, longestLine + 1 - line.size());
    };
    while (isFolded(rest_)) {
        append(takeLine().substr(1));
    }
    // In 2.1 a value in this encoding goes on in the next line, which begins with no space.
    if (line.ends_with('=') && isQuotedPrintable(line)) {
        while (line.ends_with('=') && !rest_.empty()) {
            line.pop_back();
            append(takeLine());
        }
    }
    return line.size() > longestLine ? std::string() : line;
}

CardProperty CardLines::next() {
    const std::string line = takeUnfolded();
    const std::size_t colon = findUnquoted(line, ":");
    if (colon == line.size()) {
        return {};
    }
    CardProperty property = headOf(std::string_view(line).substr(0, colon));
    const std::string_view value = std::string_view(line).substr(colon + 1);
    property.value = isQuotedPrintable(line) ? fromQuotedPrintable(value) : std::string(value);
    return property;
}

std::vector<std::string_view> partsOfValue(std::string_view value, char separator) {
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] == '\\') {
            ++at;
        } else if (value[at] == separator) {
            parts.push_back(value.substr(begin, at - begin));
            begin = at + 1;
        }
    }
    parts.push_back(value.substr(begin));
    return parts;
}

std::string textOfValue(std::string_view value) {
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\' || at + 1 == value.size()) {
            text += value[at];
            continue;
        }
        ++at;
        text += value[at] == 'n' || value[at] == 'N' ? '\n' : value[at];
    }
    return platform::toBytes(platform::fromBytes(text));
}

} // namespace addresses
