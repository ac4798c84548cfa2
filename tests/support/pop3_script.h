#pragma once

// A POP3 server with a mailbox, for ScriptedServer:
//
//     Pop3Mailbox mailbox({"From: a@example.org\r\nSubject: one\r\n\r\nbody\r\n", ...});
//     mailbox.answer("TOP 2", "-ERR no such message\r\n");     // instead of the proper answer
//     mailbox.on("RETR", [](Peer& peer) { peer.reset(); });    // or anything else
//     ScriptedServer server(mailbox);
//
// It offers no encryption and no log-on but USER and PASS until it is told:
//
//     mailbox.offers({.stls = true, .mechanisms = {"SCRAM-SHA-256"}}).encryptsWith(TlsIdentity(...));
//
// The mailbox is a handle: copies share one state, so the test can go on using its own while the server runs
// (deliver new mail between two sessions, look at what is left after a deletion, take an answer back).

#include "mailserver/pop3_conversation.h"
#include "tests/support/scripted_answers.h"
#include "tests/support/scripted_server.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/**
 * Answers as the demo server does (mailserver::Pop3Conversation), from a list of messages. A command with an
 * answer of its own is a keyword ("TOP"), with its first argument ("TOP 2"), or the whole line ("TOP 2 25");
 * the most exact one counts. Keywords are in capitals. Whatever is answered to USER and PASS, the log-on
 * counts.
 */
class Pop3Mailbox : public WithScriptedAnswers<Pop3Mailbox> {
  public:
    /** The messages as they are stored: lines end in CR LF, no dot is stuffed. */
    explicit Pop3Mailbox(std::vector<std::string> messages = {});

    /** From the next connection on. */
    Pop3Mailbox& offers(mailserver::Pop3Features features);

    /**
     * Only these are let in; without it, everybody is, and ways to log on that hide the password want
     * mailserver::kDemoPassword.
     */
    Pop3Mailbox& allowOnly(const std::string& user, const std::string& password);

    /** Puts a message at the end; a session that has begun does not see it (RFC 1939 section 3). */
    Pop3Mailbox& deliver(std::string message);

    /** Removes a message as another client would; the number counts from 1. */
    Pop3Mailbox& remove(std::size_t number);

    /** What is in the mailbox now; a deletion counts once QUIT has been answered. */
    std::vector<std::string> messages() const;

    /** Plays one connection. */
    void operator()(Peer& peer) const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

/** A message as RETR brings it, from its first line to the closing dot. */
std::string stuffed(std::string_view message);

} // namespace support
