#include "components/poplib/questions.h"

#include "components/poplib/reply_text.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <utility>

namespace poplib {

std::optional<std::string> ask(Exchange& exchange, Command command) {
    const Event event = exchange.ask(std::move(command));
    const auto* const accepted = std::get_if<Accepted>(&event);
    return accepted != nullptr ? std::optional(accepted->text) : std::nullopt;
}

bool readResponse(Exchange& exchange, Command command, const std::function<void(const Event&)>& take) {
    if (!ask(exchange, std::move(command))) {
        return false;
    }
    for (;;) {
        const Event event = exchange.next();
        if (std::holds_alternative<ResponseEnded>(event)) {
            return true;
        }
        take(event);
    }
}

std::int32_t sizeIn(std::string_view text) {
    return platform::checkedTo<std::int32_t>(leadingNumber(text));
}

std::optional<std::int32_t> askSize(Exchange& exchange, std::int32_t messageNumber) {
    const auto text = ask(exchange, listCommand(messageNumber));
    if (!text) {
        return std::nullopt;
    }
    const TwoNumbers numbers = twoNumbers(*text);
    if (numbers.first != messageNumber) {
        throw platform::RuntimeError(platform::errors::MailServerTrouble);
    }
    return platform::checkedTo<std::int32_t>(numbers.second);
}

std::optional<UniqueIds> askUniqueIds(Exchange& exchange, const std::set<std::int32_t>& wanted) {
    UniqueIds ids;
    const bool accepted = readResponse(exchange, uidlCommand(), [&](const Event& event) {
        const auto* const line = std::get_if<ListingLine>(&event);
        const auto id = line != nullptr ? uniqueId(line->text) : std::nullopt;
        if (id && wanted.contains(id->number)) {
            ids[id->number] = id->text;
        }
    });
    return accepted ? std::optional(std::move(ids)) : std::nullopt;
}

} // namespace poplib
