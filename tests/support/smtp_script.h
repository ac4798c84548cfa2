#pragma once

// An SMTP server that keeps what it is given, for ScriptedServer:
//
//     SmtpMailbox mailbox;
//     mailbox.answer("RCPT", "550 no such user\r\n");          // instead of the proper answer
//     mailbox.on("DATA", [](Peer& peer) { peer.reset(); });    // or anything else
//     ScriptedServer server(mailbox);
//
// The mailbox is a handle: copies share one state.

#include "tests/support/scripted_answers.h"
#include "tests/support/scripted_server.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

/**
 * Answers as the demo server does (mailserver::SmtpConversation). A command with an answer of its own is a
 * keyword in capitals, or "." for the end of a message. Whatever is answered to EHLO, HELO, MAIL and RCPT,
 * the next command finds them accepted.
 */
class SmtpMailbox : public WithScriptedAnswers<SmtpMailbox> {
  public:
    SmtpMailbox();

    /** The messages that were confirmed: lines with CR LF, as they came, dots still doubled. */
    std::vector<std::string> messages() const;

    /** Plays one connection. */
    void operator()(Peer& peer) const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace support
