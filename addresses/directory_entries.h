#pragma once

#include "addresses/address_source.h"
#include "components/directory/conversation.h"

#include <cstddef>
#include <vector>

namespace addresses {

/** How many addresses of one entry are shown. */
inline constexpr std::size_t mostOfOneEntry = 5;

/**
 * What entries of a directory offer: each address that the program can send to, with the entry's name for
 * showing, in the order of the directory. An address that stands there twice is found once under each name.
 * `more` is set where there are more than mostFound.
 */
FoundAddresses foundIn(const std::vector<directory::Entry>& entries);

} // namespace addresses
