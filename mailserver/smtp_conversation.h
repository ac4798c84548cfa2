#pragma once

#include "mailserver/conversation.h"
#include "mailserver/line_reader.h"
#include "mailserver/mailbox.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace mailserver {

/**
 * The server's side of one SMTP session (RFC 5321). Every well-formed recipient is accepted; a message goes
 * into the mailbox when one of them is at kLocalDomain, otherwise it is dropped: the demo never sends
 * anything on.
 */
class SmtpConversation : public Conversation {
  public:
    static constexpr std::string_view kLocalDomain = "example.org";
    /** Longest command line, in bytes without its end (RFC 5321 section 4.5.3.1.4). */
    static constexpr std::size_t kMaximumCommandBytes = 510;
    /** Longest line of a message, in bytes. RFC 5321 section 4.5.3.1.6 has 1000; the demo takes what comes.
     */
    static constexpr std::size_t kMaximumTextLineBytes = 1U << 20U;
    /** Recipients of one message (RFC 5321 section 4.5.3.1.8). */
    static constexpr std::size_t kMaximumRecipients = 100;

    explicit SmtpConversation(Mailbox& mailbox) : mailbox_(mailbox) {}

    std::string greeting() const override;
    std::string receive(std::string_view bytes) override;

    bool isOver() const override { return state_ == State::Over; }

  private:
    enum class State { Hello, Sender, Recipients, Data, Over };

    std::string answer(std::string_view line);
    std::string hello(const std::string& command, std::string_view name);
    std::string sender(std::string_view argument);
    std::string recipient(std::string_view argument);
    std::string startData();
    std::string textLine(std::string_view line, bool truncated);
    std::string endData();
    void forgetMessage();

    /** The trace line that every server adds on top (RFC 5321 section 4.4). */
    std::string receivedLine() const;

    Mailbox& mailbox_;
    LineReader input_;
    State state_ = State::Hello;
    std::string clientName_;
    bool extended_ = false;
    std::size_t recipients_ = 0;
    bool isLocal_ = false;
    bool tooLarge_ = false;
    std::string text_;
};

} // namespace mailserver
