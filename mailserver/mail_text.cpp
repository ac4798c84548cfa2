#include "mailserver/mail_text.h"

#include <algorithm>

namespace mailserver {

namespace {

/** Takes the first line, with its line end, off the text; a lone LF ends one too. */
std::string_view takeLine(std::string_view& text) {
    const std::size_t lineFeed = text.find('\n');
    const std::string_view line =
        text.substr(0, lineFeed == std::string_view::npos ? lineFeed : lineFeed + 1);
    text.remove_prefix(line.size());
    return line;
}

} // namespace

std::string withCrLf(std::string_view text) {
    std::string result;
    result.reserve(text.size() + text.size() / 32 + 2);
    while (!text.empty()) {
        const std::size_t lineFeed = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, lineFeed);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        result.append(line).append("\r\n");
        text.remove_prefix(std::min(lineFeed + 1, text.size()));
    }
    return result;
}

std::string dotStuffed(std::string_view message) {
    std::string result;
    result.reserve(message.size() + message.size() / 64 + 5);
    while (!message.empty()) {
        const std::string_view line = takeLine(message);
        if (line.starts_with('.')) {
            result += '.';
        }
        result += line;
    }
    if (!result.empty() && !result.ends_with("\r\n")) {
        result += "\r\n";
    }
    return result += ".\r\n";
}

std::string_view topOf(std::string_view message, std::size_t bodyLines) {
    std::string_view rest = message;
    while (!rest.empty() && takeLine(rest) != "\r\n") {
    }
    for (; bodyLines > 0 && !rest.empty(); --bodyLines) {
        takeLine(rest);
    }
    return message.substr(0, message.size() - rest.size());
}

std::pair<std::string, std::string_view> splitCommand(std::string_view line) {
    const std::size_t space = std::min(line.find(' '), line.size());
    return {upperCase(line.substr(0, space)), line.substr(std::min(space + 1, line.size()))};
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return result;
}

} // namespace mailserver
