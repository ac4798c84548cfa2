#pragma once

#include "mailserver/accounts.h"
#include "mailserver/mailbox.h"
#include "mailserver/smtp_log_on.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace mailserver {

/** A message that has come, and what was said of it before. */
struct IncomingMessage {
    /** The name that the client gave itself. */
    std::string clientName;
    /** True after EHLO, false after HELO. */
    bool extended = false;
    std::vector<std::string> recipients;
    /** The lines as they came, dots still doubled. */
    std::string lines;
    bool encrypted = false;
    /** The client has logged on. */
    bool loggedOn = false;
};

/** What one SMTP server does otherwise than another. */
struct SmtpService {
    std::string hostName;
    /** Takes a message upon itself; false when there is no room for it. */
    std::function<bool(IncomingMessage message)> take;
    SmtpFeatures features = {};
    Accounts accounts = anyUserWith(kDemoPassword);
};

/** The domain whose mail is not dropped. */
inline constexpr std::string_view kLocalDomain = "example.org";

/**
 * The service that puts a message into the mailbox when one of its recipients is at kLocalDomain, below the
 * trace line that every server adds on top (RFC 5321 section 4.4), and drops any other: nothing is sent on.
 */
SmtpService deliveryInto(Mailbox& mailbox, SmtpFeatures features = {});

} // namespace mailserver
