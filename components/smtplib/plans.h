#pragma once

#include "components/smtplib/log_on.h"
#include "components/transport/server_name.h"

#include <string>
#include <variant>

namespace smtplib {

// Which commands a session and a message need, and in which order. All of these raise whatever the exchange
// raises.

/** How a session has to be opened. */
struct SessionTerms {
    /** With FromTheStart the connection is encrypted already. */
    transport::Security security = transport::Security::WhenOffered;
    bool toThisComputer = false;
};

/** A session in which a message can be offered. */
struct OpenedSession {
    Extensions extensions;
    LogOnState logOn = LogOnState::NotOffered;
    bool encrypted = false;
};

/** The server has offered encryption and refused it. Another session, in clear, may go better. */
struct StartAgainInClear {};

/**
 * Waits for the greeting, says EHLO, or HELO where EHLO is not known, encrypts the connection where the terms
 * and the server want it, and logs on where the server offers it.
 * \throws RuntimeError 2041x or 2042x for what the server refuses; 20321 when encryption is demanded and not
 * offered, or refused; 20322 to 20325 when it fails; and what logOn() raises.
 */
std::variant<OpenedSession, StartAgainInClear> openSession(Exchange& exchange,
                                                           const std::string& addressLiteral,
                                                           const Account& account, const SessionTerms& terms);

/**
 * Offers a message: MAIL, RCPT for each recipient, DATA. When it returns, the server waits for the text. The
 * first recipient who is refused ends the attempt, so that all get the message or none.
 * \throws RuntimeError 20431, before anything is asked, when the message is larger than the limit that the
 * server has announced; 2041x or 2042x for what the server refuses, among them 20417 and 20427 after a log-on
 * that was refused, also when the server hangs up then, and 20418 when the server demands one and none was
 * possible; 20321 when it demands encryption.
 */
void offerMessage(Exchange& exchange, const Envelope& envelope, const OpenedSession& opened);

/**
 * Waits until the server has accepted responsibility for the message (RFC 5321 section 6.1).
 * \throws RuntimeError 20416 or 20426 when it refuses, 20431 when the message is too large for it.
 */
void awaitConfirmation(Exchange& exchange);

} // namespace smtplib
