#include "tests/support/smtp_script.h"

#include <utility>

namespace support {

SmtpMailbox& SmtpMailbox::answer(const std::string& command, std::string bytes) {
    return on(command, [bytes = std::move(bytes)](Peer& peer) { peer.send(bytes); });
}

SmtpMailbox& SmtpMailbox::on(const std::string& command, Conversation action) {
    const std::scoped_lock lock(state_->mutex);
    state_->actions[command] = std::move(action);
    return *this;
}

SmtpMailbox& SmtpMailbox::answerProperly(const std::string& command) {
    const std::scoped_lock lock(state_->mutex);
    state_->actions.erase(command);
    return *this;
}

std::vector<std::string> SmtpMailbox::messages() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->messages;
}

bool SmtpMailbox::act(const std::string& command, Peer& peer) const {
    Conversation action;
    {
        const std::scoped_lock lock(state_->mutex);
        const auto found = state_->actions.find(command);
        if (found == state_->actions.end()) {
            return false;
        }
        action = found->second;
    }
    action(peer);
    return true;
}

void SmtpMailbox::takeMessage(Peer& peer) const {
    std::string message;
    for (std::string line = peer.readLine(); line != "."; line = peer.readLine()) {
        message += line + "\r\n";
    }
    if (!act(".", peer)) {
        {
            const std::scoped_lock lock(state_->mutex);
            state_->messages.push_back(message);
        }
        peer.send("250 taken\r\n");
    }
}

void SmtpMailbox::operator()(Peer& peer) const {
    if (!act("GREETING", peer)) {
        peer.send("220 mail.example.org ready\r\n");
    }
    for (;;) {
        const std::string line = peer.readLine();
        const std::string keyword = line.substr(0, line.find(' '));
        if (act(keyword, peer)) {
            continue;
        }
        if (keyword == "EHLO") {
            peer.send("250-mail.example.org\r\n250-SIZE 100000000\r\n250 8BITMIME\r\n");
        } else if (keyword == "DATA") {
            peer.send("354 go on\r\n");
            takeMessage(peer);
        } else if (keyword == "QUIT") {
            peer.send("221 bye\r\n");
            peer.close();
        } else {
            peer.send("250 ok\r\n");
        }
    }
}

} // namespace support
