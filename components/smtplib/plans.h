#pragma once

#include "components/protocol/exchange.h"
#include "components/smtplib/smtp_session.h"

#include <string>

namespace smtplib {

using Exchange = protocol::Exchange<SmtpSession>;

// Which commands a session and a message need, and in which order. All of these raise whatever the exchange
// raises.

/**
 * Waits for the greeting and says EHLO, or HELO where EHLO is not known. Returns the server's extensions.
 * \throws RuntimeError 2041x or 2042x for what the server refuses.
 */
Extensions openSession(Exchange& exchange, const std::string& addressLiteral);

/**
 * Offers a message: MAIL, RCPT for each recipient, DATA. When it returns, the server waits for the text. The
 * first recipient who is refused ends the attempt, so that all get the message or none.
 * \throws RuntimeError 20431, before anything is asked, when the message is larger than the limit that the
 * server has announced; 2041x or 2042x for what the server refuses.
 */
void offerMessage(Exchange& exchange, const Envelope& envelope, const Extensions& extensions);

/**
 * Waits until the server has accepted responsibility for the message (RFC 5321 section 6.1).
 * \throws RuntimeError 20416 or 20426 when it refuses, 20431 when the message is too large for it.
 */
void awaitConfirmation(Exchange& exchange);

} // namespace smtplib
