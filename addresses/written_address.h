#pragma once

#include "addresses/address_source.h"

#include <string>
#include <string_view>

namespace addresses {

/**
 * The address as the To field takes it, in UTF-8: behind its name and in angle brackets, or alone where there
 * is no name. Quotes stand around a name that has more than words, and backslashes before what would end
 * them (RFC 5322 sections 3.2.4 and 3.4).
 */
std::string writtenAddress(const FoundAddress& found);

/** Whether a list of addresses, as it is typed, has the address already, whatever the case of its letters. */
bool hasAddress(std::string_view typed, std::string_view address);

} // namespace addresses
