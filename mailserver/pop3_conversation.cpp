#include "mailserver/pop3_conversation.h"

#include "mailserver/mail_text.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace mailserver {

namespace {

constexpr std::string_view kNoSuchMessage = "-ERR there is no such message\r\n";

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
    const std::string& timestamp = logOn_.features().timestamp;
    return timestamp.empty() ? "+OK ready\r\n" : "+OK ready " + timestamp + "\r\n";
}

std::string Pop3Conversation::receive(std::string_view bytes) {
    input_.append(bytes);
    std::string answers;
    std::string line;
    while (!isOver() && !wantsEncryption()) {
        const std::size_t maximumBytes =
            logOn_.isInDialogue() ? SaslDialogue::kMaximumLineBytes : kMaximumCommandBytes;
        const LineReader::Result result = input_.next(line, maximumBytes);
        if (result == LineReader::Result::Incomplete) {
            return answers;
        }
        if (result == LineReader::Result::Line) {
            answers += answer(line);
        } else {
            logOn_.cancel();
            answers += "-ERR the line is too long\r\n";
        }
    }
    input_ = {};
    return answers;
}

void Pop3Conversation::encrypted() {
    encryption_ = Encryption::Begun;
    input_ = {};
    logOn_.encrypted();
}

std::string Pop3Conversation::answer(std::string_view line) {
    if (logOn_.isInDialogue()) {
        return enter(logOn_.goOn(line));
    }
    const auto [command, argument] = splitCommand(line);
    if (command == "CAPA") {
        return capabilities();
    }
    if (command == "QUIT") {
        return logOff();
    }
    return state_ == State::Authorization ? answerBeforeLogOn(command, argument)
                                          : answerAfterLogOn(command, argument);
}

std::string Pop3Conversation::capabilities() const {
    const Pop3Features& features = logOn_.features();
    std::string lines = "+OK this server can\r\n" + logOn_.userCapability() +
                        "TOP\r\nUIDL\r\nPIPELINING\r\nRESP-CODES\r\nAUTH-RESP-CODE\r\n";
    if (features.stls && encryption_ == Encryption::None) {
        lines += "STLS\r\n";
    }
    lines += logOn_.saslCapability();
    if (features.utf8) {
        lines += "UTF8\r\n";
    }
    return lines + ".\r\n";
}

std::string Pop3Conversation::answerBeforeLogOn(const std::string& command, std::string_view argument) {
    if (command == "STLS" && logOn_.features().stls) {
        return inviteEncryption();
    }
    if (command == "UTF8" && logOn_.features().utf8) {
        return "+OK texts are UTF-8 from here on\r\n";
    }
    return enter(logOn_.answer(command, argument).value_or("-ERR not known before log-on\r\n"));
}

std::string Pop3Conversation::inviteEncryption() {
    if (encryption_ == Encryption::Begun) {
        return "-ERR this is encrypted already\r\n";
    }
    encryption_ = Encryption::Invited;
    return "+OK begin TLS\r\n";
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

/** Opens the mailbox where the log-on has succeeded with this answer. */
std::string Pop3Conversation::enter(std::string answer) {
    if (logOn_.isAdmitted()) {
        for (const MessagePointer& message : mailbox_.messages()) {
            entries_.push_back({message});
        }
        state_ = State::Transaction;
    }
    return answer;
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
