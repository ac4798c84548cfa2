#pragma once

#include "components/poplib/pop3_session.h"
#include "components/protocol/exchange.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace poplib {

using Exchange = protocol::Exchange<Pop3Session>;

// The questions that plans put to a POP3 server. All of these raise whatever the exchange raises.

/** Sends a command and returns the text of its +OK reply, nothing for -ERR. */
std::optional<std::string> ask(Exchange& exchange, Command command);

/** Sends a command and hands over the lines of its multi-line response; false when the server refuses it. */
bool readResponse(Exchange& exchange, Command command, const std::function<void(const Event&)>& take);

/**
 * The size in what a server says of a message behind its number.
 * \throws RuntimeError 20302 when that is no number, 6 when it does not fit.
 */
std::int32_t sizeIn(std::string_view text);

/**
 * The size of the message in bytes (LIST n); nothing when the server refuses LIST.
 * \throws RuntimeError 20302 for a reply about another message, 6 for a number that does not fit.
 */
std::optional<std::int32_t> askSize(Exchange& exchange, std::int32_t messageNumber);

/** For each message's number the rest of its line in the response to LIST: a size, and perhaps words. */
using SizeTexts = std::map<std::int32_t, std::string>;

using UniqueIds = std::map<std::int32_t, std::string>;

/** The unique-ids of the wanted messages, as far as the server lists them; nothing when it refuses UIDL. */
std::optional<UniqueIds> askUniqueIds(Exchange& exchange, const std::set<std::int32_t>& wanted);

} // namespace poplib
