#pragma once

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
    /** The name was typed in quotes, so it is meant to the letter. */
    bool nameWasQuoted = false;
    /** As it goes over the wire: quoted where it must be, and only there. */
    std::string localPart;
    std::string domain;

    /** `local@domain`, without angle brackets. */
    std::string mailbox() const { return localPart + '@' + domain; }

    bool operator==(const Address&) const = default;
};

/** Longest parts of an address, in bytes (RFC 5321 section 4.5.3.1). A path has angle brackets. */
inline constexpr std::size_t kMaximumLocalPartBytes = 64;
inline constexpr std::size_t kMaximumDomainBytes = 255;
inline constexpr std::size_t kMaximumPathBytes = 256;

/**
 * Reads addresses as they are typed (RFC 5322 section 3.4): separated by commas, each one plain or in angle
 * brackets behind a name, with comments anywhere. Empty items and a comma at the end count for nothing, so
 * the list may come out empty. The members of a group, as in "Friends: ann@example.org, bob@example.org;",
 * stand for themselves, and the group's name is dropped.
 *
 * An address needs a domain: were the sender's put behind a bare word, the unquoted name in
 * "Miller, Ann <ann@example.org>" would make Miller a recipient. Addresses are ASCII, as this client does
 * not speak the extension for others (RFC 6531). Routes and spaces around the dots, which are obsolete, are
 * refused.
 *
 * \throws RuntimeError 20403 when the text holds CR, LF or NUL, 20401 for anything else that is no address or
 * is too long for one.
 */
std::vector<Address> parseAddressList(std::string_view text);

/** What parseAddressList() raises for a text, and for which part of it. */
struct AddressFault {
    int error = 0;
    /** Bytes of the text: an item between commas, without the spaces around it. */
    std::size_t begin = 0;
    std::size_t end = 0;
};

/** The first item of a list of addresses that is none; nothing when all are right. */
std::optional<AddressFault> findAddressFault(std::string_view text);

/**
 * The mailboxes of both lists, each one once, in the order of their first appearance. Domains that differ
 * only in case are the same, local parts are not (RFC 5321 section 2.4).
 */
std::vector<std::string> distinctMailboxes(const std::vector<Address>& recipients,
                                           const std::vector<Address>& copies);

} // namespace smtplib
