#include "tests/support/scripted_answers.h"

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

void converse(Peer& peer, mailserver::Conversation& conversation, const ScriptedAnswers& answers,
              const std::function<HeardLine(const std::string& line)>& understand, std::mutex& mutex) {
    const auto say = [&peer](const std::optional<Conversation>& action, const std::string& bytes) {
        if (action) {
            (*action)(peer);
        } else if (!bytes.empty()) {
            peer.send(bytes);
        }
    };
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
        say(action, answer);
    }
    peer.close();
}

} // namespace support
