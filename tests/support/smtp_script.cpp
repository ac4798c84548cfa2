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
    HeardLine heard{{keyword}, leadsOn};
    if (keyword == "AUTH") {
        heard.commands.insert(heard.commands.begin(), line.substr(0, line.find(' ', keyword.size() + 1)));
    }
    return heard;
}

/** Of a message's text only the end has an answer, and the text is over whoever gives it. */
HeardLine understandText(const std::string& line) {
    return line == "." ? HeardLine{{line}, true} : HeardLine{};
}
} // namespace

struct SmtpMailbox::State {
    std::mutex mutex;
    std::vector<std::string> messages;
    mailserver::SmtpFeatures features;
    mailserver::Accounts accounts = anybody();
};

SmtpMailbox::SmtpMailbox() : state_(std::make_shared<State>()) {}

SmtpMailbox& SmtpMailbox::offers(mailserver::SmtpFeatures features) {
    const std::scoped_lock lock(state_->mutex);
    state_->features = std::move(features);
    return *this;
}

SmtpMailbox& SmtpMailbox::allowOnly(const std::string& user, const std::string& password) {
    const std::scoped_lock lock(state_->mutex);
    state_->accounts = mailserver::only(user, password);
    return *this;
}

std::vector<std::string> SmtpMailbox::messages() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->messages;
}

void SmtpMailbox::operator()(Peer& peer) const {
    std::unique_lock lock(state_->mutex);
    mailserver::SmtpConversation conversation({"mail.example.org",
                                               [this](mailserver::IncomingMessage message) {
                                                   if (!answers().find({"."})) {
                                                       state_->messages.push_back(std::move(message.lines));
                                                   }
                                                   return true;
                                               },
                                               state_->features, state_->accounts});
    lock.unlock();
    const auto understand = [&conversation](const std::string& line) {
        return conversation.isInText() ? understandText(line) : understandCommand(line);
    };
    converse(peer, conversation, answers(), understand, state_->mutex);
}

} // namespace support
