#pragma once

#include "components/smtplib/address_parts.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/** One mailbox of a list of addresses. */
struct Address {
    /** The name before the angle brackets, without its quotes, UTF-8; empty when there is none. */
    std::string displayName;
    /** The name was typed in quotes, so the header quotes it even where atoms would do. */
    bool nameWasQuoted = false;
    /** As it goes over the wire: quoted where it must be, and only there. */
    std::string localPart;
    std::string domain;

    /** `local@domain`, without angle brackets. */
    std::string mailbox() const { return localPart + '@' + domain; }

    bool operator==(const Address&) const = default;
};

/** Longest parts of an address, in bytes (RFC 5321 section 4.5.3.1). A path counts its angle brackets. */
inline constexpr std::size_t kMaximumLocalPartBytes = 64;
inline constexpr std::size_t kMaximumDomainBytes = 255;
inline constexpr std::size_t kMaximumPathBytes = 256;

/**
 * Reads addresses as they are typed (RFC 5322 section 3.4): separated by commas, each one plain or in angle
 * brackets behind a name, with comments anywhere. Empty items and a comma at the end count for nothing, so
 * the list may come out empty. The members of a group, as in "Friends: ann@example.org, bob@example.org;",
 * stand for themselves, and the group's name is dropped.
 *
 * An address needs a domain. If the sender's domain were added to a bare word, the unquoted name in "Miller,
 * Ann <ann@example.org>" would make Miller a recipient. Obsolete syntax, which is routes and spaces around
 * dots, is refused.
 *
 * \throws RuntimeError 20403 when the text holds CR, LF or NUL, 20401 for anything else that is not an
 * address or is too long for one, 20405 as AddressCharacters says.
 */
std::vector<Address> parseAddressList(std::string_view text,
                                      AddressCharacters characters = AddressCharacters::Ascii);

/** What parseAddressList() raises for a text, and for which part of it. */
struct AddressFault {
    int error = 0;
    /** Where the faulty item begins and ends in the text, in bytes, without the spaces around it. */
    std::size_t begin = 0;
    std::size_t end = 0;
};

/** The first item of a list that is not an address; nothing when all are. */
std::optional<AddressFault> findAddressFault(std::string_view text,
                                             AddressCharacters characters = AddressCharacters::Ascii);

/**
 * The mailboxes of both lists, each one once, in the order of their first appearance. Domains that differ
 * only in case are the same, local parts are not (RFC 5321 section 2.4).
 */
std::vector<std::string> distinctMailboxes(const std::vector<Address>& recipients,
                                           const std::vector<Address>& copies);

} // namespace smtplib
