#include "message/forwarded_text.h"

#include <initializer_list>

namespace {
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEnds = "---------Foward Message Ends---------------";

std::string joined(std::initializer_list<std::string_view> pieces) {
    std::size_t bytes = 0;
    for (const std::string_view piece : pieces) {
        bytes += piece.size();
    }
    std::string text;
    text.reserve(bytes);
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

/** What stands above the text. */
std::string beginning(std::string_view date, std::string_view from, std::string_view subject) {
    return joined({kLineEnd, kLineEnd, kLineEnd, "----------Foward Message Follows----------", kLineEnd,
                   "Date: ", date, kLineEnd, "From: ", from, kLineEnd, "Subject: ", subject, kLineEnd,
                   kLineEnd});
}
} // namespace

std::string forwardedText(const email::MessageSummary& message) {
    return joined({beginning(message.Date, message.From, message.Subject), message.BodyText, kLineEnd,
                   message.HeaderText, kEnds});
}

std::string forwardedText(std::string_view date, std::string_view from, std::string_view subject,
                          std::string_view text) {
    return joined({beginning(date, from, subject), text, kLineEnd, kEnds});
}
