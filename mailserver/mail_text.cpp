#include "mailserver/mail_text.h"

#include <algorithm>

namespace mailserver {

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
    result.reserve(message.size() + message.size() / 64 + 3);
    while (!message.empty()) {
        const std::size_t end = message.find("\r\n");
        const std::size_t length = end == std::string_view::npos ? message.size() : end + 2;
        if (message.front() == '.') {
            result += '.';
        }
        result += message.substr(0, length);
        message.remove_prefix(length);
    }
    return result += ".\r\n";
}

std::string_view topOf(std::string_view message, std::size_t bodyLines) {
    const std::size_t headerEnd = message.starts_with("\r\n") ? 0 : message.find("\r\n\r\n");
    if (headerEnd == std::string_view::npos) {
        return message;
    }
    std::size_t end = headerEnd + (headerEnd == 0 ? 2 : 4);
    for (; bodyLines > 0 && end < message.size(); --bodyLines) {
        const std::size_t lineEnd = message.find("\r\n", end);
        end = lineEnd == std::string_view::npos ? message.size() : lineEnd + 2;
    }
    return message.substr(0, end);
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
