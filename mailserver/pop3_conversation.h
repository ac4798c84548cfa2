#pragma once

#include "mailserver/conversation.h"
#include "mailserver/line_reader.h"
#include "mailserver/mailbox.h"
#include "mailserver/pop3_log_on.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mailserver {

/**
 * The server's side of one POP3 session (RFC 1939), with TOP, UIDL, CAPA and PIPELINING, and what the
 * features add. A session sees the mailbox as it was at log-on; deletions take effect with QUIT.
 */
class Pop3Conversation : public Conversation {
  public:
    /** Longest command line, in bytes without its end (RFC 2449 section 4). */
    static constexpr std::size_t kMaximumCommandBytes = 253;

    Pop3Conversation(Mailbox& mailbox, Accounts accounts, Pop3Features features = {})
        : mailbox_(mailbox), logOn_(std::move(accounts), std::move(features)) {}

    Pop3Conversation(Mailbox& mailbox, Admission admits)
        : Pop3Conversation(mailbox, Accounts{std::move(admits)}) {}

    explicit Pop3Conversation(Mailbox& mailbox) : Pop3Conversation(mailbox, anyUserWith(kDemoPassword)) {}

    std::string greeting() const override;
    std::string receive(std::string_view bytes) override;

    bool isOver() const override { return state_ == State::Over; }

    bool wantsEncryption() const override { return encryption_ == Encryption::Invited; }

    void encrypted() override;

  private:
    enum class State { Authorization, Transaction, Over };

    struct Entry {
        MessagePointer message;
        bool deleted = false;
    };

    std::string answer(std::string_view line);
    std::string answerBeforeLogOn(const std::string& command, std::string_view argument);
    std::string answerAfterLogOn(const std::string& command, std::string_view argument);

    std::string capabilities() const;
    std::string inviteEncryption();
    std::string enter(std::string answer);
    std::string statistics() const;
    template <class Describe>
    std::string listing(std::string_view argument, const Describe& describe) const;
    std::string top(std::string_view argument) const;
    std::string retrieve(std::string_view argument) const;
    std::string markDeleted(std::string_view argument);
    std::string unmarkAll();
    std::string logOff();

    /** Index of the undeleted message with the number that the text names. */
    std::optional<std::size_t> indexOf(std::string_view number) const;

    Mailbox& mailbox_;
    Pop3LogOn logOn_;
    LineReader input_;
    State state_ = State::Authorization;
    Encryption encryption_ = Encryption::None;
    std::vector<Entry> entries_;
};

} // namespace mailserver
