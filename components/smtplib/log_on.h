#pragma once

#include "components/protocol/exchange.h"
#include "components/sasl/mechanism.h"
#include "components/smtplib/smtp_session.h"

#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

using Exchange = protocol::Exchange<SmtpSession>;

/** Who sends. */
struct Account {
    std::string user;
    std::string password;
    /** Another name for the same user, which is tried when the server refuses the first; empty for none. */
    std::string otherUser;
};

/** Who could hear what is said on the connection. */
enum class Channel { InClear, InClearToThisComputer, Encrypted };

Channel channelOf(bool encrypted, bool toThisComputer) noexcept;

/** What has become of the log-on of a session. */
enum class LogOnState {
    NotOffered,
    /** The server offers no mechanism that may be used on this channel. */
    NoWay,
    Refused,
    RefusedForNow,
    LoggedOn
};

/** The mechanisms that may be used on this channel, of those that the server offers, in the order of trying.
 */
std::vector<std::string_view> usableMechanisms(const Extensions& extensions, Channel channel);

/**
 * Logs on with AUTH (RFC 4954) where the server offers it. Mechanisms that do not show the password come
 * first; in clear no other is used, unless the server is on this computer. A refusal is no error: the server
 * may know the sender by the network address and take the mail all the same.
 *
 * \throws RuntimeError 20172 when the server does not prove that it knows the password where it should; 20417
 * or 20427 when it ends the session over a refused log-on; and whatever the exchange raises.
 */
LogOnState logOn(Exchange& exchange, const Account& account, const Extensions& extensions, Channel channel);

} // namespace smtplib
