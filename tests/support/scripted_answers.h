#pragma once

// A server that behaves well but where the test has it do something else.

#include "mailserver/accounts.h"
#include "mailserver/conversation.h"
#include "tests/support/scripted_server.h"
#include "tests/support/tls_identity.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support {

/** Makes another answer of the proper one to a line. */
using Alteration = std::function<std::string(const std::string& line, std::string answer)>;

/**
 * What a server does instead of answering properly, by command, and how it encrypts; tests change it while
 * the server runs.
 */
class ScriptedAnswers {
  public:
    /** How the server encrypts, where its conversation does. */
    struct Tls {
        /** Nothing means a valid certificate for this computer. */
        std::optional<TlsIdentity> identity;
        bool fromTheStart = false;
    };

    void set(const std::string& command, Conversation action);
    void remove(const std::string& command);
    void setAlteration(Alteration alteration);
    void setTls(Tls tls);

    /** The proper answer to the line, altered where the test wants it so. */
    std::string altered(const std::string& line, std::string answer) const;

    Tls tls() const;

    /** The action for the first of these commands that has one. */
    std::optional<Conversation> find(const std::vector<std::string>& commands) const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, Conversation> actions_;
    Alteration alteration_;
    Tls tls_;
};

/** Lets everybody in; ways to log on that hide the password want mailserver::kDemoPassword. */
mailserver::Accounts anybody();

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
 * answer, or of the greeting as "GREETING". TLS begins when the conversation wants it, or before the
 * greeting. The mutex is held whenever the conversation looks at what it shares.
 */
void converse(Peer& peer, mailserver::Conversation& conversation, const ScriptedAnswers& answers,
              const std::function<HeardLine(const std::string& line)>& understand, std::mutex& mutex);

/** What a test says to a mailbox about its answers and its encryption. The mailbox is a handle: copies share
 * one state. */
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

    /** Sends what this makes of each proper answer: a wrong signature, a number that is too large. */
    Mailbox& alter(Alteration alteration) {
        answers_->setAlteration(std::move(alteration));
        return static_cast<Mailbox&>(*this);
    }

    /** Is this one from the next handshake on; before, a server with a valid certificate for this computer.
     */
    Mailbox& encryptsWith(TlsIdentity identity) {
        answers_->setTls({std::move(identity), answers_->tls().fromTheStart});
        return static_cast<Mailbox&>(*this);
    }

    /** Speaks TLS from the first byte of the next connection on. */
    Mailbox& tlsFromTheStart(TlsIdentity identity) {
        answers_->setTls({std::move(identity), true});
        return static_cast<Mailbox&>(*this);
    }

  protected:
    const ScriptedAnswers& answers() const { return *answers_; }

  private:
    std::shared_ptr<ScriptedAnswers> answers_ = std::make_shared<ScriptedAnswers>();
};

} // namespace support
