#pragma once

// An SMTP server that keeps what it is given, for ScriptedServer:
//
//     SmtpMailbox mailbox;
//     mailbox.answer("RCPT", "550 no such user\r\n");          // instead of the proper answer
//     mailbox.on("DATA", [](Peer& peer) { peer.reset(); });    // or anything else
//     ScriptedServer server(mailbox);
//
// The mailbox is a handle: copies share one state.

#include "tests/support/scripted_server.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace support {

/** Answers EHLO, HELO, MAIL, RCPT, DATA and QUIT, and knows SIZE and 8BITMIME. */
class SmtpMailbox {
  public:
    SmtpMailbox() : state_(std::make_shared<State>()) {}

    /**
     * Sends these bytes instead of the proper answer. The command is a keyword in capitals, "GREETING", or
     * "." for the end of a message.
     */
    SmtpMailbox& answer(const std::string& command, std::string bytes);

    /** The same, with anything that a peer can be made to do. */
    SmtpMailbox& on(const std::string& command, Conversation action);

    /** The proper answer to this command from now on. */
    SmtpMailbox& answerProperly(const std::string& command);

    /** The messages that were confirmed: lines with CR LF, as they came, dots still doubled. */
    std::vector<std::string> messages() const;

    /** Plays one connection. */
    void operator()(Peer& peer) const;

  private:
    struct State {
        mutable std::mutex mutex;
        std::map<std::string, Conversation> actions;
        std::vector<std::string> messages;
    };

    /** True when it did something of its own. */
    bool act(const std::string& command, Peer& peer) const;
    void takeMessage(Peer& peer) const;

    std::shared_ptr<State> state_;
};

} // namespace support
