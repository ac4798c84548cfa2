#include "bench/listing/sample_mailbox.h"

#include <sstream>
#include <string>

namespace bench {

namespace {
constexpr int kBodyLines = 60;

std::string header(int number) {
    std::ostringstream text;
    text << "Return-Path: <writer" << number % 17 << "@example.org>\n"
         << "Delivered-To: reader@example.com\n";
    for (int hop = 3; hop > 0; --hop) {
        text << "Received: from relay" << hop << ".example.org (relay" << hop << ".example.org [192.0.2."
             << hop << "])\n\tby relay" << hop - 1 << ".example.net (Postbox) with ESMTPS id 4F"
             << number * 7 + hop << "A\n\tfor <reader@example.com>; Mon, 3 Mar 2025 09:" << 10 + number % 50
             << ":0" << hop << " +0000\n";
    }
    text << "Message-ID: <" << number << ".20250303@example.org>\n"
         << "Date: Mon, 3 Mar 2025 09:" << 10 + number % 50 << ":00 +0000\n"
         << "From: \"Writer " << number % 17 << "\" <writer" << number % 17 << "@example.org>\n"
         << "To: reader@example.com\n"
         << "Subject: Letter " << number << " about the timetable of the next term\n"
         << "MIME-Version: 1.0\n"
         << "Content-Type: multipart/mixed;\n boundary=\"part-" << number << "-of-letters\"\n"
         << "User-Agent: Letterbox 3.2\n"
         << "X-Priority: 3\n";
    return std::move(text).str();
}

std::string body(int number, std::size_t lineBytes) {
    std::ostringstream text;
    text << "--part-" << number << "-of-letters\nContent-Type: text/plain; charset=utf-8\n\n";
    for (int line = 0; line < kBodyLines; ++line) {
        // A line in twenty starts with a dot, so that unstuffing is part of the work.
        std::string words = "Line " + std::to_string(line) + " of letter " + std::to_string(number) +
                            ", about as long as most lines that people write.";
        while (words.size() < lineBytes) {
            words += words.substr(0, lineBytes - words.size());
        }
        text << (line % 20 == 7 ? ". " : "") << words << '\n';
    }
    text << "--part-" << number << "-of-letters--\n";
    return std::move(text).str();
}
} // namespace

void fillWithSamples(mailserver::Mailbox& mailbox, int messages, std::size_t lineBytes) {
    for (int number = 1; number <= messages; ++number) {
        mailbox.append(header(number) + '\n' + body(number, lineBytes));
    }
}

} // namespace bench
