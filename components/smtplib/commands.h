#pragma once

#include "components/protocol/command_text.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class QString;

namespace smtplib {

/** What a reply belongs to: the new connection (Greeting), a command, or the message's text. */
enum class CommandKind {
    Greeting,
    Ehlo,
    Helo,
    StartTls,
    Auth,
    AuthResponse,
    Mail,
    Rcpt,
    Data,
    EndOfMessage,
    Quit
};

/** One SMTP command (RFC 5321). */
struct Command : protocol::CommandText {
    CommandKind kind = CommandKind::Quit;
};

/** Longest command line, in bytes, line end included (RFC 5321 section 4.5.3.1.4). */
inline constexpr std::size_t kMaximumCommandBytes = 512;

/** The sender and the recipients of a message, and what MAIL may announce about it. */
struct Envelope {
    /** Mailboxes, without angle brackets, as parseAddressList() makes them. */
    std::string sender;
    std::vector<std::string> recipients;
    /** Bytes of header and text as they go out, line ends counted, doubled dots not (RFC 1870 section 5). */
    std::int64_t messageBytes = 0;
    /** The text has bytes beyond ASCII. */
    bool eightBit = false;
    /** An address has characters beyond ASCII, so MAIL asks for SMTPUTF8 (RFC 6531 section 3.4). */
    bool smtpUtf8 = false;
};

/**
 * The argument of EHLO and HELO: this computer's address on the connection, as a literal (RFC 5321 section
 * 4.1.3). A host name might be one that the server cannot look up.
 */
std::string addressLiteral(const QString& localAddress);

Command ehloCommand(const std::string& addressLiteral);
Command heloCommand(const std::string& addressLiteral);
/** STARTTLS asks the server to begin encryption (RFC 3207 section 4). */
Command startTlsCommand();
/**
 * AUTH with the mechanism's name and its initial response in base64, which is empty for a mechanism without
 * one (RFC 4954 section 4).
 */
Command authCommand(std::string_view mechanism, std::string_view initialResponse);
/** The response to a challenge of AUTH, in base64; "*" cancels the log-on (RFC 4954 section 4). */
Command authResponseCommand(std::string_view response);
/** MAIL, with SIZE and BODY where the server knows these, and with SMTPUTF8 where the envelope wants it. */
Command mailCommand(const Envelope& envelope, bool withSize, bool withBody);
Command rcptCommand(const std::string& mailbox);
Command dataCommand();
/** The dot alone on its line that ends the message's text. */
Command endOfMessageCommand();
Command quitCommand();

} // namespace smtplib
