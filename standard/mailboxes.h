#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standard {

/**
 * The mailboxes of an address field (RFC 5322 section 3.4) as a person types them: separated by ", ", groups
 * taken apart, names decoded, and between quotes where they hold a character that means something there.
 * Empty when there is no address.
 */
std::string mailboxesText(std::string_view field);

/** The message ids of a field (RFC 5322 section 3.6.4), each with its angle brackets; printable ASCII only.
 */
std::vector<std::string> messageIdsOf(std::string_view field);

} // namespace standard
