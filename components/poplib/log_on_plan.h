#pragma once

#include "components/poplib/questions.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace poplib {

/** What the mailbox holds, as the server reports it. */
struct MailboxTotals {
    std::int16_t messages = 0;
    std::int32_t bytes = 0;
};

/** The server refused the name or the password. The session is still in step, and QUIT can follow. */
struct LogOnRefused {
    /** What stands after "-ERR", without the space between. */
    std::string text;
};

/**
 * Waits for the greeting, logs on with USER and PASS, and asks for the totals with STAT.
 * \throws RuntimeError 20302 when the server refuses STAT or its reply holds no totals, 6 when a total does
 * not fit its type, and whatever the exchange raises.
 */
std::variant<MailboxTotals, LogOnRefused> logOn(Exchange& exchange, std::string_view user,
                                                std::string_view password);

} // namespace poplib
