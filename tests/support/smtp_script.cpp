#include "tests/support/smtp_script.h"

#include "mailserver/smtp_conversation.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <utility>

namespace support {

namespace {
constexpr std::array<std::string_view, 4> kBeforeTheMessage{"EHLO", "HELO", "MAIL", "RCPT"};

HeardLine understandCommand(const std::string& line) {
    const std::string keyword = line.substr(0, line.find(' '));
    const bool leadsOn =
        std::find(kBeforeTheMessage.begin(), kBeforeTheMessage.end(), keyword) != kBeforeTheMessage.end();
    return {{keyword}, leadsOn};
}

/** Of a message's text only the end has an answer, and the text is over whoever gives it. */
HeardLine understandText(const std::string& line) {
    return line == "." ? HeardLine{{line}, true} : HeardLine{};
}
} // namespace

struct SmtpMailbox::State {
    std::mutex mutex;
    std::vector<std::string> messages;
};

SmtpMailbox::SmtpMailbox() : state_(std::make_shared<State>()) {}

std::vector<std::string> SmtpMailbox::messages() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->messages;
}

void SmtpMailbox::operator()(Peer& peer) const {
    mailserver::SmtpConversation conversation(
        {"mail.example.org", [this](mailserver::IncomingMessage message) {
             if (!answers().find({"."})) {
                 state_->messages.push_back(std::move(message.lines));
             }
             return true;
         }});
    const auto understand = [&conversation](const std::string& line) {
        return conversation.isInText() ? understandText(line) : understandCommand(line);
    };
    converse(peer, conversation, answers(), understand, state_->mutex);
}

} // namespace support
