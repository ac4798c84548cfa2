#include "tests/support/scripted_answers.h"

#include <string_view>
#include <utility>

namespace support {

void ScriptedAnswers::set(const std::string& command, Conversation action) {
    const std::scoped_lock lock(mutex_);
    actions_[command] = std::move(action);
}

void ScriptedAnswers::remove(const std::string& command) {
    const std::scoped_lock lock(mutex_);
    actions_.erase(command);
}

std::optional<Conversation> ScriptedAnswers::find(const std::vector<std::string>& commands) const {
    const std::scoped_lock lock(mutex_);
    for (const std::string& command : commands) {
        if (const auto found = actions_.find(command); found != actions_.end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

void ScriptedAnswers::setAlteration(Alteration alteration) {
    const std::scoped_lock lock(mutex_);
    alteration_ = std::move(alteration);
}

void ScriptedAnswers::setTls(Tls tls) {
    const std::scoped_lock lock(mutex_);
    tls_ = std::move(tls);
}

std::string ScriptedAnswers::altered(const std::string& line, std::string answer) const {
    const std::scoped_lock lock(mutex_);
    return alteration_ ? alteration_(line, std::move(answer)) : answer;
}

ScriptedAnswers::Tls ScriptedAnswers::tls() const {
    const std::scoped_lock lock(mutex_);
    return tls_;
}

mailserver::Accounts anybody() {
    mailserver::Accounts accounts = mailserver::anyUserWith(mailserver::kDemoPassword);
    accounts.admits = [](std::string_view /*user*/, std::string_view /*password*/) { return true; };
    return accounts;
}

namespace {
void encrypt(Peer& peer, mailserver::Conversation& conversation, const std::optional<TlsIdentity>& identity) {
    static const TlsIdentity valid(testRoot().issue(loopback()));
    peer.beginTls(identity.value_or(valid));
    conversation.encrypted();
}
} // namespace

void converse(Peer& peer, mailserver::Conversation& conversation, const ScriptedAnswers& answers,
              const std::function<HeardLine(const std::string& line)>& understand, std::mutex& mutex) {
    const auto say = [&peer](const std::optional<Conversation>& action, const std::string& bytes) {
        if (action) {
            (*action)(peer);
        } else if (!bytes.empty()) {
            peer.send(bytes);
        }
    };
    if (const ScriptedAnswers::Tls tls = answers.tls(); tls.fromTheStart) {
        encrypt(peer, conversation, tls.identity);
    }
    say(answers.find({"GREETING"}), conversation.greeting());
    while (!conversation.isOver()) {
        const std::string line = peer.readLine();
        const HeardLine heard = understand(line);
        const auto action = answers.find(heard.commands);
        std::string answer;
        if (!action || heard.countsAnyway) {
            const std::scoped_lock lock(mutex);
            answer = conversation.receive(line + "\r\n");
        }
        say(action, answers.altered(line, std::move(answer)));
        if (conversation.wantsEncryption()) {
            encrypt(peer, conversation, answers.tls().identity);
        }
    }
    peer.close();
}

} // namespace support
