#include "components/smtplib/reply_reader.h"

#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace smtplib {

namespace {
/** The three digits that a line starts with, or nothing. No reply starts with another digit than 2 to 5. */
std::optional<int> codeOf(std::string_view line) {
    int code = 0;
    const std::string_view digits = line.substr(0, 3);
    const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
    if (problem != std::errc{} || digits.size() != 3 || end != digits.data() + 3 || code < 200 ||
        code > 599) {
        return std::nullopt;
    }
    return code;
}

std::int64_t limitOf(std::string_view text) {
    std::int64_t limit = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), limit);
    return problem == std::errc{} && end == text.data() + text.size() && limit > 0 ? limit : 0;
}

/** Adds the words of the text, in capitals. */
void addWords(std::string_view text, std::vector<std::string>& words) {
    constexpr std::string_view separators = " \t=";
    for (std::size_t begin = text.find_first_not_of(separators); begin != std::string_view::npos;
         begin = text.find_first_not_of(separators, begin)) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        words.push_back(platform::upperCase(text.substr(begin, end - begin)));
        begin = end;
    }
}
} // namespace

bool Extensions::offers(std::string_view mechanism) const {
    return std::find(mechanisms.begin(), mechanisms.end(), mechanism) != mechanisms.end();
}

Extensions extensionsOf(const Reply& reply) {
    Extensions extensions;
    // The first line is the server's name.
    for (std::size_t index = 1; index < reply.lines.size(); ++index) {
        const std::string_view line = reply.lines[index];
        const std::size_t space = line.find(' ');
        const std::string keyword = platform::upperCase(line.substr(0, space));
        if (keyword == "SIZE") {
            extensions.size = true;
            extensions.sizeLimit = space == std::string_view::npos ? 0 : limitOf(line.substr(space + 1));
        } else if (keyword == "8BITMIME") {
            extensions.eightBit = true;
        } else if (keyword == "SMTPUTF8") {
            extensions.smtpUtf8 = true;
        } else if (keyword == "PIPELINING") {
            extensions.pipelining = true;
        } else if (keyword == "STARTTLS") {
            extensions.startTls = true;
        } else if (keyword == "AUTH" || keyword.starts_with("AUTH=")) {
            // "AUTH=" is how it was spelled before there was a standard.
            addWords(line.substr(4), extensions.mechanisms);
        }
    }
    return extensions;
}

std::optional<Reply> ReplyReader::next() {
    while (!broken_) {
        const std::optional<std::string_view> line = input_.nextReplyLine();
        // A CR at the end of an incomplete line may belong to the line end and does not count.
        const std::size_t bytes =
            line ? line->size() : input_.size() - (input_.endsInCarriageReturn() ? 1 : 0);
        if (bytes > kMaximumLineBytes) {
            broken_ = true;
        } else if (!line) {
            break;
        } else if (takeLine(*line)) {
            return std::exchange(reply_, {});
        }
    }
    return std::nullopt;
}

bool ReplyReader::takeLine(std::string_view line) {
    const std::optional<int> code = codeOf(line);
    const char mark = line.size() > 3 ? line[3] : ' ';
    const bool belongs = reply_.lines.empty() || code == reply_.code;
    if (!code || !belongs || (mark != ' ' && mark != '-') || reply_.lines.size() == kMaximumLines) {
        broken_ = true;
        return false;
    }
    reply_.code = *code;
    reply_.lines.emplace_back(line.substr(std::min<std::size_t>(line.size(), 4)));
    return mark == ' ';
}

} // namespace smtplib
