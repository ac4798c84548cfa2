#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace addresses {

/** What is taken from one card. Everything is UTF-8. */
struct Card {
    /** Of the full name, the parts of the name, the organisation and the nickname the first that is there. */
    std::string name;
    /** As they stand in the card, the preferred one first. */
    std::vector<std::string> addresses;

    bool operator==(const Card&) const = default;
};

/** The cards of one file, in its order. */
struct CardsRead {
    std::vector<Card> cards;
    /** How many more there are that cannot be read. */
    std::size_t unreadable = 0;
};

/**
 * Reads vCards of the versions 3.0 (RFC 2426) and 4.0 (RFC 6350), one behind the other, and what those of 2.1
 * have of names and addresses. Values are UTF-8 where they are valid UTF-8, otherwise Windows-1252, whatever
 * a charset parameter says.
 *
 * A card without a version of these, without its end, or with thousands of properties is unreadable, and so
 * is, as one, a file that has anything but cards. Nothing is an error.
 */
CardsRead readCards(std::string_view file);

} // namespace addresses
