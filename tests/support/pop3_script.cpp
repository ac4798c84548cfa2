#include "tests/support/pop3_script.h"

#include "mailserver/mail_text.h"

#include <mutex>
#include <optional>
#include <utility>

namespace support {

struct Pop3Mailbox::State {
    std::mutex mutex;
    mailserver::Mailbox mailbox;
    mailserver::Pop3Features features;
    mailserver::Accounts accounts = anybody();
};

namespace {
/** The whole line, the command with its first argument, and the command. */
HeardLine understand(const std::string& line) {
    HeardLine heard{{line}, line.starts_with("USER ") || line.starts_with("PASS ")};
    for (std::size_t space = line.rfind(' '); space != std::string::npos && space > 0;
         space = line.rfind(' ', space - 1)) {
        heard.commands.push_back(line.substr(0, space));
    }
    return heard;
}
} // namespace

Pop3Mailbox::Pop3Mailbox(std::vector<std::string> messages) : state_(std::make_shared<State>()) {
    for (std::string& message : messages) {
        state_->mailbox.store(std::move(message));
    }
}

Pop3Mailbox& Pop3Mailbox::offers(mailserver::Pop3Features features) {
    const std::scoped_lock lock(state_->mutex);
    state_->features = std::move(features);
    return *this;
}

Pop3Mailbox& Pop3Mailbox::allowOnly(const std::string& user, const std::string& password) {
    const std::scoped_lock lock(state_->mutex);
    state_->accounts = mailserver::only(user, password);
    return *this;
}

Pop3Mailbox& Pop3Mailbox::deliver(std::string message) {
    const std::scoped_lock lock(state_->mutex);
    state_->mailbox.store(std::move(message));
    return *this;
}

Pop3Mailbox& Pop3Mailbox::remove(std::size_t number) {
    const std::scoped_lock lock(state_->mutex);
    const std::string uniqueId = state_->mailbox.messages().at(number - 1)->uniqueId;
    state_->mailbox.remove(uniqueId);
    return *this;
}

std::vector<std::string> Pop3Mailbox::messages() const {
    const std::scoped_lock lock(state_->mutex);
    std::vector<std::string> texts;
    for (const mailserver::MessagePointer& message : state_->mailbox.messages()) {
        texts.push_back(message->text);
    }
    return texts;
}

void Pop3Mailbox::operator()(Peer& peer) const {
    std::unique_lock lock(state_->mutex);
    mailserver::Pop3Conversation conversation(state_->mailbox, state_->accounts, state_->features);
    lock.unlock();
    converse(peer, conversation, answers(), understand, state_->mutex);
}

std::string stuffed(std::string_view message) {
    return mailserver::dotStuffed(message);
}

} // namespace support
