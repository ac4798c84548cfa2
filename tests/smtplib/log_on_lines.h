#pragma once

// Dialogues of a log-on to send, and of the message behind it.

#include "components/smtplib/plans.h"
#include "platform/runtime_error.h"
#include "tests/smtplib/dialogue.h"

#include <gtest/gtest.h>

#include <string_view>
#include <variant>
#include <vector>

namespace support {

/** Lines of a dialogue. */
using Lines = std::vector<std::string_view>;

inline Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/** The server announces only what stands in the line. */
inline Lines offering(std::string_view line) {
    return {"S 220 mail", "C EHLO [127.0.0.1]", "S 250-mail", line};
}

// The message of Bob to Ann, up to each command.
inline const Lines kMail{"C MAIL FROM:<bob@example.org>"};
inline const Lines kRcpt{"C MAIL FROM:<bob@example.org>", "S 250 ok", "C RCPT TO:<ann@example.org>"};
inline const Lines kData = kRcpt + Lines{"S 250 ok", "C DATA"};
inline const Lines kTaken = kData + Lines{"S 354 go on"};

inline const smtplib::Account kBob{"bob", "secret", {}};
inline const smtplib::Account kBobOfExample{"bob", "secret", "bob@example.org"};

/** The number of the error that offering the message to this server ends with, 0 for none. */
inline int errorOfOffer(SmtpDialogue& dialogue, const smtplib::SessionTerms& terms,
                        const smtplib::Account& account) {
    return platform::errorNumberOf([&] {
        const auto opened = smtplib::openSession(dialogue, "[127.0.0.1]", account, terms);
        smtplib::offerMessage(dialogue, {"bob@example.org", {"ann@example.org"}, 20, false},
                              std::get<smtplib::OpenedSession>(opened));
    });
}

inline smtplib::SessionTerms termsOf(smtplib::Channel channel) {
    using transport::Security;
    const bool encrypted = channel == smtplib::Channel::Encrypted;
    return {encrypted ? Security::FromTheStart : Security::WhenOffered,
            channel == smtplib::Channel::InClearToThisComputer};
}

/** Checks that all of the dialogue is said, and that it ends with this number. */
inline void expectError(const Lines& lines, int error, smtplib::Channel channel = smtplib::Channel::Encrypted,
                        const smtplib::Account& account = kBob) {
    SmtpDialogue dialogue(lines);
    EXPECT_EQ(errorOfOffer(dialogue, termsOf(channel), account), error) << lines.back();
    dialogue.expectToBeSaid();
}

} // namespace support
