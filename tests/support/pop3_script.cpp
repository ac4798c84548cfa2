#include "tests/support/pop3_script.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>
#include <utility>

namespace support {

namespace {
struct StoredMessage {
    std::string text;
    std::string uniqueId;
};

using Stored = std::shared_ptr<const StoredMessage>;

/** Takes the first line, with its line end, off the text. */
std::string_view takeLine(std::string_view& text) {
    const std::size_t lineFeed = text.find('\n');
    const std::string_view line =
        text.substr(0, lineFeed == std::string_view::npos ? lineFeed : lineFeed + 1);
    text.remove_prefix(line.size());
    return line;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::optional<std::size_t> numberOf(const std::vector<std::string>& words, std::size_t index) {
    std::size_t number = 0;
    if (index >= words.size()) {
        return std::nullopt;
    }
    const std::string& word = words[index];
    const auto [end, problem] = std::from_chars(word.data(), word.data() + word.size(), number);
    return problem == std::errc{} && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}
} // namespace

struct Pop3Mailbox::State {
    mutable std::mutex mutex;
    std::vector<Stored> messages;
    std::size_t delivered = 0;
    std::map<std::string, Conversation> actions;
    std::optional<std::pair<std::string, std::string>> allowed;

    void deliver(std::string message) {
        const std::scoped_lock lock(mutex);
        messages.push_back(std::make_shared<const StoredMessage>(
            StoredMessage{std::move(message), "message-" + std::to_string(++delivered)}));
    }

    std::optional<Conversation> actionFor(const std::string& line) const {
        const std::scoped_lock lock(mutex);
        const std::vector<std::string> words = wordsOf(line);
        std::vector<std::string> keys{line};
        if (words.size() > 1) {
            keys.push_back(words[0] + ' ' + words[1]);
        }
        if (!words.empty()) {
            keys.push_back(words[0]);
        }
        for (const std::string& key : keys) {
            if (const auto found = actions.find(key); found != actions.end()) {
                return found->second;
            }
        }
        return std::nullopt;
    }
};

namespace {
/** One connection: the mailbox as it was when the session began, and what the client has done to it. */
class Session {
  public:
    using Words = std::vector<std::string>;

    Session(Peer& peer, std::vector<Stored> messages)
        : peer_(peer), messages_(std::move(messages)), deleted_(messages_.size(), false) {}

    /** The messages to be removed now that QUIT has come. */
    std::vector<Stored> toBeRemoved() const {
        std::vector<Stored> removed;
        for (std::size_t index = 0; index < messages_.size(); ++index) {
            if (deleted_[index]) {
                removed.push_back(messages_[index]);
            }
        }
        return removed;
    }

    void answer(const Words& words) {
        const std::string keyword = words.empty() ? std::string() : words[0];
        if (keyword == "STAT") {
            answerTotals();
        } else if (keyword == "LIST" || keyword == "UIDL") {
            answerListing(words, keyword == "LIST");
        } else if (keyword == "TOP" || keyword == "RETR") {
            answerContent(words, keyword == "TOP");
        } else if (keyword == "DELE") {
            answerDeletion(words);
        } else if (keyword == "RSET") {
            deleted_.assign(messages_.size(), false);
            peer_.send("+OK\r\n");
        } else if (keyword == "NOOP") {
            peer_.send("+OK\r\n");
        } else {
            peer_.send("-ERR unknown command\r\n");
        }
    }

  private:
    bool isThere(std::size_t index) const { return index < messages_.size() && !deleted_[index]; }

    /** The message that the command names; answers -ERR itself when there is none. */
    const StoredMessage* wanted(const Words& words) {
        const std::size_t index = numberOf(words, 1).value_or(0) - 1;
        if (isThere(index)) {
            return messages_[index].get();
        }
        peer_.send("-ERR no such message\r\n");
        return nullptr;
    }

    void answerTotals() {
        std::size_t count = 0;
        std::size_t bytes = 0;
        for (std::size_t index = 0; index < messages_.size(); ++index) {
            count += isThere(index) ? 1 : 0;
            bytes += isThere(index) ? messages_[index]->text.size() : 0;
        }
        peer_.send("+OK " + std::to_string(count) + ' ' + std::to_string(bytes) + "\r\n");
    }

    void answerListing(const Words& words, bool sizes) {
        const auto entry = [sizes](const std::string& number, const StoredMessage& message) {
            return number + ' ' + (sizes ? std::to_string(message.text.size()) : message.uniqueId) + "\r\n";
        };
        if (words.size() > 1) {
            if (const StoredMessage* message = wanted(words)) {
                peer_.send("+OK " + entry(words[1], *message));
            }
            return;
        }
        std::string answer = "+OK\r\n";
        for (std::size_t index = 0; index < messages_.size(); ++index) {
            if (isThere(index)) {
                answer += entry(std::to_string(index + 1), *messages_[index]);
            }
        }
        peer_.send(answer + ".\r\n");
    }

    void answerContent(const Words& words, bool top) {
        if (const StoredMessage* message = wanted(words)) {
            const std::size_t lines = numberOf(words, 2).value_or(0);
            peer_.send("+OK\r\n" + stuffed(top ? firstLines(message->text, lines) : message->text));
        }
    }

    void answerDeletion(const Words& words) {
        if (wanted(words) != nullptr) {
            deleted_[*numberOf(words, 1) - 1] = true;
            peer_.send("+OK\r\n");
        }
    }

    Peer& peer_;
    std::vector<Stored> messages_;
    std::vector<bool> deleted_;
};
} // namespace

Pop3Mailbox::Pop3Mailbox(std::vector<std::string> messages) : state_(std::make_shared<State>()) {
    for (std::string& message : messages) {
        state_->deliver(std::move(message));
    }
}

Pop3Mailbox& Pop3Mailbox::answer(const std::string& command, std::string bytes) {
    return on(command, [bytes = std::move(bytes)](Peer& peer) { peer.send(bytes); });
}

Pop3Mailbox& Pop3Mailbox::on(const std::string& command, Conversation action) {
    const std::scoped_lock lock(state_->mutex);
    state_->actions[command] = std::move(action);
    return *this;
}

Pop3Mailbox& Pop3Mailbox::answerProperly(const std::string& command) {
    const std::scoped_lock lock(state_->mutex);
    state_->actions.erase(command);
    return *this;
}

Pop3Mailbox& Pop3Mailbox::allowOnly(std::string user, std::string password) {
    const std::scoped_lock lock(state_->mutex);
    state_->allowed = {std::move(user), std::move(password)};
    return *this;
}

Pop3Mailbox& Pop3Mailbox::deliver(std::string message) {
    state_->deliver(std::move(message));
    return *this;
}

Pop3Mailbox& Pop3Mailbox::remove(std::size_t number) {
    const std::scoped_lock lock(state_->mutex);
    state_->messages.erase(std::next(state_->messages.begin(), static_cast<std::ptrdiff_t>(number) - 1));
    return *this;
}

std::vector<std::string> Pop3Mailbox::messages() const {
    const std::scoped_lock lock(state_->mutex);
    std::vector<std::string> texts;
    for (const Stored& message : state_->messages) {
        texts.push_back(message->text);
    }
    return texts;
}

void Pop3Mailbox::operator()(Peer& peer) const {
    std::vector<Stored> snapshot;
    std::optional<std::pair<std::string, std::string>> allowed;
    {
        const std::scoped_lock lock(state_->mutex);
        snapshot = state_->messages;
        allowed = state_->allowed;
    }
    Session session(peer, std::move(snapshot));
    if (const auto greeting = state_->actionFor("GREETING")) {
        (*greeting)(peer);
    } else {
        peer.send("+OK ready\r\n");
    }
    std::string user;
    bool loggedOn = false;
    for (;;) {
        const std::string line = peer.readLine();
        if (const auto action = state_->actionFor(line)) {
            (*action)(peer);
            // A test that answers PASS itself lets the client in with +OK; what follows is answered properly.
            loggedOn = loggedOn || line.starts_with("PASS ");
        } else if (line.starts_with("USER ")) {
            user = line.substr(5);
            peer.send("+OK\r\n");
        } else if (line.starts_with("PASS ")) {
            loggedOn = !allowed || *allowed == std::pair(user, line.substr(5));
            peer.send(loggedOn ? "+OK logged on\r\n" : "-ERR wrong name or password\r\n");
        } else if (line == "QUIT") {
            if (loggedOn) {
                const std::scoped_lock lock(state_->mutex);
                for (const Stored& message : session.toBeRemoved()) {
                    std::erase(state_->messages, message);
                }
            }
            peer.send("+OK bye\r\n");
            peer.close();
        } else if (loggedOn) {
            session.answer(wordsOf(line));
        } else {
            peer.send("-ERR log on first\r\n");
        }
    }
}

std::string stuffed(std::string_view message) {
    std::string bytes;
    while (!message.empty()) {
        const std::string_view line = takeLine(message);
        bytes.append(line.starts_with('.') ? "." : "").append(line);
    }
    if (!bytes.empty() && !bytes.ends_with("\r\n")) {
        bytes += "\r\n";
    }
    return bytes + ".\r\n";
}

std::string firstLines(std::string_view message, std::size_t bodyLines) {
    std::string bytes;
    bool inBody = false;
    while (!message.empty() && (!inBody || bodyLines > 0)) {
        const std::string_view line = takeLine(message);
        bodyLines -= inBody ? 1 : 0;
        inBody = inBody || line == "\r\n";
        bytes.append(line);
    }
    return bytes;
}

} // namespace support
