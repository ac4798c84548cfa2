#pragma once

// A server that behaves well but where the test has it do something else.

#include "mailserver/conversation.h"
#include "tests/support/scripted_server.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support {

/** What a server does instead of answering properly, by command; tests change it while the server runs. */
class ScriptedAnswers {
  public:
    void set(const std::string& command, Conversation action);
    void remove(const std::string& command);

    /** The action for the first of these commands that has one. */
    std::optional<Conversation> find(const std::vector<std::string>& commands) const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, Conversation> actions_;
};

/** A line of the client's. */
struct HeardLine {
    /** Under what its action is looked for, the most exact first. */
    std::vector<std::string> commands;
    /** It counts although the test answers it. Any other line has then not come, as far as the server knows.
     */
    bool countsAnyway = false;
};

/**
 * Holds a well-behaved server's conversation with the peer, but for what the test has put in the place of an
 * answer, or of the greeting as "GREETING". The mutex is held whenever the conversation looks at what it
 * shares.
 */
void converse(Peer& peer, mailserver::Conversation& conversation, const ScriptedAnswers& answers,
              const std::function<HeardLine(const std::string& line)>& understand, std::mutex& mutex);

/** What a test says to a mailbox about its answers. The mailbox is a handle: copies share one state. */
template <class Mailbox>
class WithScriptedAnswers {
  public:
    /** Sends these bytes, as they are, instead of the proper answer. */
    Mailbox& answer(const std::string& command, std::string bytes) {
        return on(command, [bytes = std::move(bytes)](Peer& peer) { peer.send(bytes); });
    }

    /** The same, with anything that a peer can be made to do. */
    Mailbox& on(const std::string& command, Conversation action) {
        answers_->set(command, std::move(action));
        return static_cast<Mailbox&>(*this);
    }

    /** The proper answer to this command from now on. */
    Mailbox& answerProperly(const std::string& command) {
        answers_->remove(command);
        return static_cast<Mailbox&>(*this);
    }

  protected:
    const ScriptedAnswers& answers() const { return *answers_; }

  private:
    std::shared_ptr<ScriptedAnswers> answers_ = std::make_shared<ScriptedAnswers>();
};

} // namespace support
