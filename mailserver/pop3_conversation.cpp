#include "mailserver/pop3_conversation.h"

#include "mailserver/mail_text.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace mailserver {

namespace {

constexpr std::string_view kNoSuchMessage = "-ERR there is no such message\r\n";
constexpr std::string_view kCapabilities =
    "+OK this server can\r\n"
    "USER\r\nTOP\r\nUIDL\r\nPIPELINING\r\nRESP-CODES\r\nAUTH-RESP-CODE\r\n"
    ".\r\n";

std::optional<std::size_t> numberOf(std::string_view text) {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stopped != end) {
        return std::nullopt;
    }
    return number;
}

} // namespace

std::string Pop3Conversation::greeting() const {
    return "+OK ready\r\n";
}

std::string Pop3Conversation::receive(std::string_view bytes) {
    input_.append(bytes);
    std::string answers;
    std::string line;
    while (!isOver()) {
        const LineReader::Result result = input_.next(line, kMaximumCommandBytes);
        if (result == LineReader::Result::Incomplete) {
            break;
        }
        answers += result == LineReader::Result::Line ? answer(line) : "-ERR the line is too long\r\n";
    }
    return answers;
}

std::string Pop3Conversation::answer(std::string_view line) {
    const auto [command, argument] = splitCommand(line);
    if (command == "CAPA") {
        return std::string(kCapabilities);
    }
    if (command == "QUIT") {
        return logOff();
    }
    return state_ == State::Authorization ? answerBeforeLogOn(command, argument)
                                          : answerAfterLogOn(command, argument);
}

std::string Pop3Conversation::answerBeforeLogOn(const std::string& command, std::string_view argument) {
    if (command == "USER") {
        user_ = argument;
        return user_.empty() ? "-ERR a user name is needed\r\n" : "+OK the password, please\r\n";
    }
    if (command == "PASS") {
        return logOn(argument);
    }
    return "-ERR not known before log-on\r\n";
}

std::string Pop3Conversation::answerAfterLogOn(const std::string& command, std::string_view argument) {
    if (command == "STAT") {
        return statistics();
    }
    if (command == "LIST") {
        return listing(argument, [](const Message& message) { return std::to_string(message.text.size()); });
    }
    if (command == "UIDL") {
        return listing(argument, [](const Message& message) { return message.uniqueId; });
    }
    if (command == "TOP") {
        return top(argument);
    }
    if (command == "RETR") {
        return retrieve(argument);
    }
    if (command == "DELE") {
        return markDeleted(argument);
    }
    if (command == "RSET") {
        return unmarkAll();
    }
    if (command == "NOOP") {
        return "+OK\r\n";
    }
    return "-ERR not known\r\n";
}

std::string Pop3Conversation::logOn(std::string_view password) {
    const std::string user = std::exchange(user_, {});
    if (user.empty()) {
        return "-ERR the user name comes first\r\n";
    }
    if (!admits_(user, password)) {
        return "-ERR [AUTH] wrong name or password\r\n";
    }
    for (const MessagePointer& message : mailbox_.messages()) {
        entries_.push_back({message});
    }
    state_ = State::Transaction;
    return "+OK welcome\r\n";
}

std::string Pop3Conversation::statistics() const {
    std::size_t count = 0;
    std::size_t bytes = 0;
    for (const Entry& entry : entries_) {
        if (entry.deleted) {
            continue;
        }
        ++count;
        bytes += entry.message->text.size();
    }
    return "+OK " + std::to_string(count) + " " + std::to_string(bytes) + "\r\n";
}

template <class Describe>
std::string Pop3Conversation::listing(std::string_view argument, const Describe& describe) const {
    const auto lineFor = [&](std::size_t index) {
        return std::to_string(index + 1) + " " + describe(*entries_[index].message) + "\r\n";
    };
    if (!argument.empty()) {
        const auto index = indexOf(argument);
        return index ? "+OK " + lineFor(*index) : std::string(kNoSuchMessage);
    }
    std::string lines = "+OK the list follows\r\n";
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        if (!entries_[index].deleted) {
            lines += lineFor(index);
        }
    }
    return lines + ".\r\n";
}

std::string Pop3Conversation::top(std::string_view argument) const {
    const std::size_t space = argument.find(' ');
    if (space == std::string_view::npos) {
        return "-ERR a message number and a count of lines are needed\r\n";
    }
    const auto bodyLines = numberOf(argument.substr(space + 1));
    if (!bodyLines) {
        return "-ERR that is no count of lines\r\n";
    }
    const auto index = indexOf(argument.substr(0, space));
    if (!index) {
        return std::string(kNoSuchMessage);
    }
    return "+OK the top follows\r\n" + dotStuffed(topOf(entries_[*index].message->text, *bodyLines));
}

std::string Pop3Conversation::retrieve(std::string_view argument) const {
    const auto index = indexOf(argument);
    if (!index) {
        return std::string(kNoSuchMessage);
    }
    const std::string& text = entries_[*index].message->text;
    return "+OK " + std::to_string(text.size()) + " octets\r\n" + dotStuffed(text);
}

std::string Pop3Conversation::markDeleted(std::string_view argument) {
    const auto index = indexOf(argument);
    if (!index) {
        return std::string(kNoSuchMessage);
    }
    entries_[*index].deleted = true;
    return "+OK deleted when you leave\r\n";
}

std::string Pop3Conversation::unmarkAll() {
    for (Entry& entry : entries_) {
        entry.deleted = false;
    }
    return "+OK nothing is deleted\r\n";
}

std::string Pop3Conversation::logOff() {
    for (const Entry& entry : entries_) {
        if (entry.deleted) {
            mailbox_.remove(entry.message->uniqueId);
        }
    }
    state_ = State::Over;
    return "+OK good-bye\r\n";
}

std::optional<std::size_t> Pop3Conversation::indexOf(std::string_view number) const {
    const auto wanted = numberOf(number);
    if (!wanted || *wanted < 1 || *wanted > entries_.size() || entries_[*wanted - 1].deleted) {
        return std::nullopt;
    }
    return *wanted - 1;
}

} // namespace mailserver
