#pragma once

#include "components/poplib/capabilities.h"
#include "components/poplib/questions.h"
#include "components/sasl/mechanism.h"
#include "components/transport/server_name.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace poplib {

/** What the mailbox holds, as the server reports it. */
struct MailboxTotals {
    std::int16_t messages = 0;
    std::int32_t bytes = 0;
};

/** The server refused the name or the password. The session is still in step, and QUIT can follow. */
struct LogOnRefused {
    /** What stands after "-ERR", without the space between. */
    std::string text;
    /** The password was not, or would not have been, protected by encryption. */
    bool inClear = false;
};

/** How a log-on has to go about it. */
struct LogOnTerms {
    /** With FromTheStart the connection is encrypted already. */
    transport::Security security = transport::Security::WhenOffered;
    /** False for a server that has broken a session off when it was asked. */
    bool asksForCapabilities = true;
    /** The messages are going to be listed. */
    bool listing = false;
    /** False for a server that has not answered commands that were sent ahead. */
    bool pipelines = true;
    /** From an earlier session with this server. What is known is not asked for again. */
    KnownServer known = {};
};

/** A mailbox that is open. */
struct OpenMailbox {
    MailboxTotals totals;
    /** The server answers commands that are sent ahead of the replies to others. */
    bool pipelines = false;
    /** The server has announced TOP, so that it should not refuse it for a message. */
    bool givesFirstLines = false;
    /** The sizes of the messages, where they had to be asked for. */
    SizeTexts sizes;
    /** What a later session need not ask for. */
    KnownServer known = {};
};

/** The session is of no more use. Another one, with these terms, may go better. */
struct StartAgain {
    LogOnTerms terms;
};

/** What a server has said before anybody logs on. */
struct Introduction {
    /** What stands behind the "+OK" of the greeting. */
    std::string greeting;
    /** After the encryption, where there is one. */
    Capabilities capabilities;
    bool encrypted = false;
    /** What a later session need not ask for. */
    KnownServer known = {};
};

/**
 * Waits for the greeting, asks for the capabilities and encrypts the connection where the terms and the
 * server want it: what comes before a log-on. Raises what logOn() raises of this.
 */
std::variant<Introduction, StartAgain> meet(Exchange& exchange, const LogOnTerms& terms);

/**
 * The ways to log on that this server leaves, in the order in which they are tried: mechanisms of AUTH, APOP,
 * and USER for the password itself, which is always the last one. A later one counts only where the earlier
 * ones cannot be used with the account.
 */
std::vector<std::string_view> waysToLogOn(const Introduction& server);

/**
 * Waits for the greeting, encrypts the connection where the terms and the server want it, logs on, and asks
 * for the totals with STAT.
 *
 * Commands are sent ahead where the server announces PIPELINING (RFC 2449 section 6.6), but never behind
 * PASS: some servers hand a session over to another process there and lose what has come. Other servers
 * mostly can do it, too. Before a listing one is tried with STAT and LIST together, at a moment when another
 * session can still take over unnoticed. LIST then gives all sizes at once.
 *
 * The password is not shown where the server can do without: mechanisms that prove it without showing it come
 * first (RFC 5802, RFC 2195, APOP). On a connection that is encrypted the password itself is the second
 * choice, in clear it is the last. One call spends one attempt: once the server has seen a proof of the
 * password and has refused it, nothing else is tried.
 *
 * \throws RuntimeError 20321 when encryption is demanded and not offered, or refused; 20322 to 20325 when it
 * fails; 20172 when the server does not prove that it knows the password itself; 20302 when the server
 * refuses STAT or its reply holds no totals, 6 when a total does not fit its type, and whatever the exchange
 * raises.
 */
std::variant<OpenMailbox, LogOnRefused, StartAgain> logOn(Exchange& exchange, const sasl::Account& account,
                                                          const LogOnTerms& terms);

} // namespace poplib
