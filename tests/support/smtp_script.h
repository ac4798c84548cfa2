#pragma once

// An SMTP server that keeps what it is given, for ScriptedServer:
//
//     SmtpMailbox mailbox;
//     mailbox.answer("RCPT", "550 no such user\r\n");          // instead of the proper answer
//     mailbox.on("DATA", [](Peer& peer) { peer.reset(); });    // or anything else
//     ScriptedServer server(mailbox);
//
// It offers neither encryption nor a log-on until it is told:
//
//     mailbox.offers({.startTls = true, .mechanisms = {"PLAIN"}}).encryptsWith(TlsIdentity(...));
//
// The mailbox is a handle: copies share one state.

#include "mailserver/smtp_log_on.h"
#include "tests/support/scripted_answers.h"
#include "tests/support/scripted_server.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

/**
 * Answers as the demo server does (mailserver::SmtpConversation). A command with an answer of its own is a
 * keyword in capitals, AUTH with its mechanism ("AUTH PLAIN"), or "." for the end of a message. Whatever is
 * answered to EHLO, HELO, MAIL and RCPT, the next command finds them accepted.
 */
class SmtpMailbox : public WithScriptedAnswers<SmtpMailbox> {
  public:
    SmtpMailbox();

    /** From the next connection on. */
    SmtpMailbox& offers(mailserver::SmtpFeatures features);

    /**
     * Only these may log on; without it, everybody may, and ways to log on that hide the password want
     * mailserver::kDemoPassword.
     */
    SmtpMailbox& allowOnly(const std::string& user, const std::string& password);

    /** The messages that were confirmed: lines with CR LF, as they came, dots still doubled. */
    std::vector<std::string> messages() const;

    /** Plays one connection. */
    void operator()(Peer& peer) const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace support
