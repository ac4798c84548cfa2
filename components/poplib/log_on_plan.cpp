#include "components/poplib/log_on_plan.h"

#include "components/poplib/reply_text.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

namespace poplib {

std::variant<MailboxTotals, LogOnRefused> logOn(Exchange& exchange, std::string_view user,
                                                std::string_view password) {
    exchange.next(); // the greeting
    for (const Command& command : {userCommand(user), passCommand(password)}) {
        const Event event = exchange.ask(command);
        if (const auto* const refused = std::get_if<Refused>(&event)) {
            return LogOnRefused{refused->text};
        }
    }
    const auto totals = ask(exchange, statCommand());
    if (!totals) {
        throw platform::RuntimeError(platform::errors::MailServerTrouble);
    }
    const TwoNumbers numbers = twoNumbers(*totals);
    return MailboxTotals{platform::checkedTo<std::int16_t>(numbers.first),
                         platform::checkedTo<std::int32_t>(numbers.second)};
}

} // namespace poplib
