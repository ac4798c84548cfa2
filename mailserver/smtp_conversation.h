#pragma once

#include "mailserver/conversation.h"
#include "mailserver/incoming_text.h"
#include "mailserver/line_reader.h"
#include "mailserver/smtp_log_on.h"
#include "mailserver/smtp_service.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mailserver {

/**
 * The server's side of one SMTP session (RFC 5321), with SIZE, 8BITMIME, ENHANCEDSTATUSCODES and PIPELINING,
 * and what the service's features add. Every well-formed recipient is accepted.
 */
class SmtpConversation : public Conversation {
  public:
    /** Longest command line, in bytes without its end (RFC 5321 section 4.5.3.1.4). */
    static constexpr std::size_t kMaximumCommandBytes = 510;
    /** Recipients of one message (RFC 5321 section 4.5.3.1.8). */
    static constexpr std::size_t kMaximumRecipients = 100;

    explicit SmtpConversation(const SmtpService& service)
        : service_(service), logOn_(service.accounts, service.features) {}

    explicit SmtpConversation(Mailbox& mailbox) : SmtpConversation(deliveryInto(mailbox)) {}

    std::string greeting() const override;
    std::string receive(std::string_view bytes) override;

    bool isOver() const override { return state_ == State::Over; }

    bool wantsEncryption() const override { return encryption_ == Encryption::Invited; }

    void encrypted() override;

    /** True between the invitation to send a message's text and the end of it. */
    bool isInText() const { return state_ == State::Text; }

  private:
    enum class State { Hello, Sender, Recipients, Text, Over };

    std::string answer(std::string_view line);
    std::string answerToMail(const std::string& command, std::string_view argument);
    std::string hello(const std::string& command, std::string_view name);
    std::string capabilities() const;
    std::string inviteEncryption(std::string_view argument);
    std::string logOn(std::string_view argument);
    bool lacksEncryption() const;
    std::string sender(std::string_view argument);
    std::string recipient(std::string_view argument);
    std::string startText();
    std::string endText();
    void forgetMessage();

    SmtpService service_;
    SmtpLogOn logOn_;
    Encryption encryption_ = Encryption::None;
    LineReader input_;
    State state_ = State::Hello;
    std::string clientName_;
    bool extended_ = false;
    std::size_t announcedBytes_ = 0;
    std::vector<std::string> recipients_;
    IncomingText text_;
};

} // namespace mailserver
