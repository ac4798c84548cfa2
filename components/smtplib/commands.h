#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class QString;

namespace SMTPLib {

/** Longest command line, in octets, line end included (RFC 5321 section 4.5.3.1.4). */
inline constexpr std::size_t kMaximumCommandOctets = 512;

/** Whom a message is from and for, and what the server may be told about it beforehand. */
struct Envelope {
    /** Mailboxes, without angle brackets, as parseAddressList() makes them. */
    std::string sender;
    std::vector<std::string> recipients;
    /** Octets of header and text as they go out, line ends counted, doubled dots not (RFC 1870 section 5). */
    std::int64_t messageOctets = 0;
    /** The text has octets beyond ASCII. */
    bool eightBit = false;
};

/**
 * How this computer calls itself: the address of its end of the connection, as a literal (RFC 5321 section
 * 4.1.3). Its name may be one that no server could look up.
 */
std::string addressLiteral(const QString& localAddress);

/** The commands, without line ends. */
std::string ehloCommand(const std::string& addressLiteral);
std::string heloCommand(const std::string& addressLiteral);
/** MAIL, with SIZE and BODY where the server knows these. */
std::string mailCommand(const Envelope& envelope, bool withSize, bool withBody);
std::string rcptCommand(const std::string& mailbox);

} // namespace SMTPLib
