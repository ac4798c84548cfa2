#include "message/forwarded_text.h"

#include <initializer_list>
#include <string_view>

std::string forwardedText(const email::MessageSummary& message) {
    constexpr std::string_view lineEnd = "\r\n";
    std::string text;
    text.reserve(message.BodyText.size() + message.HeaderText.size() + 1'000);
    const std::initializer_list<std::string_view> pieces = {lineEnd,
                                                            lineEnd,
                                                            lineEnd,
                                                            "----------Foward Message Follows----------",
                                                            lineEnd,
                                                            "Date: ",
                                                            message.Date,
                                                            lineEnd,
                                                            "From: ",
                                                            message.From,
                                                            lineEnd,
                                                            "Subject: ",
                                                            message.Subject,
                                                            lineEnd,
                                                            lineEnd,
                                                            message.BodyText,
                                                            lineEnd,
                                                            message.HeaderText,
                                                            "---------Foward Message Ends---------------"};
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}
