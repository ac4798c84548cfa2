#include "mailserver/smtp_conversation.h"

#include "mailserver/mail_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <utility>

namespace mailserver {

namespace {

constexpr std::string_view kOutOfOrder = "503 5.5.1 not now\r\n";
constexpr std::string_view kEncryptionFirst = "530 5.7.0 STARTTLS comes first\r\n";
constexpr std::string_view kTooLarge = "552 5.3.4 the message is too large\r\n";

bool isVisible(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

/** The address of "FROM:<address> parameters" or "TO:<address>", nothing when the text is not of that form.
 */
std::optional<std::string_view> pathOf(std::string_view argument, std::string_view keyword) {
    if (upperCase(argument.substr(0, keyword.size())) != keyword) {
        return std::nullopt;
    }
    argument.remove_prefix(keyword.size());
    // A space before the bracket is wrong but common.
    while (argument.starts_with(' ')) {
        argument.remove_prefix(1);
    }
    const std::size_t end = argument.find('>');
    if (!argument.starts_with('<') || end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view path = argument.substr(1, end - 1);
    return std::all_of(path.begin(), path.end(), [](unsigned char c) { return c >= ' ' && c != 0x7f; })
               ? std::optional(path)
               : std::nullopt;
}

/** The bytes that the sender's parameters announce (RFC 1870 section 6.1), 0 when they announce none. */
std::size_t announcedBytesOf(std::string_view argument) {
    const std::string parameters = upperCase(argument);
    const std::size_t start = parameters.find(" SIZE=");
    if (start == std::string::npos) {
        return 0;
    }
    std::size_t bytes = 0;
    const auto [end, error] =
        std::from_chars(parameters.data() + start + 6, parameters.data() + parameters.size(), bytes);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::size_t>::max() : bytes;
}

} // namespace

std::string SmtpConversation::greeting() const {
    return "220 " + service_.hostName + " ESMTP ready\r\n";
}

std::string SmtpConversation::receive(std::string_view bytes) {
    std::string answers;
    std::string line;
    std::string behindData;
    while (!isOver() && !wantsEncryption()) {
        if (isInText()) {
            bytes = text_.take(bytes);
            if (!text_.isComplete()) {
                break;
            }
            answers += endText();
            continue;
        }
        input_.append(bytes);
        bytes = {};
        const std::size_t maximumBytes =
            logOn_.isInDialogue() ? SaslDialogue::kMaximumLineBytes : kMaximumCommandBytes;
        const LineReader::Result result = input_.next(line, maximumBytes);
        if (result == LineReader::Result::Incomplete) {
            break;
        }
        if (result == LineReader::Result::Line) {
            answers += answer(line);
        } else {
            logOn_.cancel();
            answers += "500 5.5.2 the line is too long\r\n";
        }
        if (isInText()) {
            behindData = input_.takeRest();
            bytes = behindData;
        }
    }
    if (wantsEncryption()) {
        input_ = {};
    }
    return answers;
}

void SmtpConversation::encrypted() {
    forgetMessage();
    encryption_ = Encryption::Begun;
    state_ = State::Hello;
    clientName_.clear();
    extended_ = false;
    input_ = {};
    logOn_.encrypted();
}

std::string SmtpConversation::answer(std::string_view line) {
    if (logOn_.isInDialogue()) {
        return logOn_.goOn(line);
    }
    const auto [command, argument] = splitCommand(line);
    if (command == "EHLO" || command == "HELO") {
        return hello(command, argument);
    }
    if (command == "STARTTLS" && service_.features.startTls) {
        return inviteEncryption(argument);
    }
    if (command == "AUTH" && !service_.features.mechanisms.empty()) {
        return logOn(argument);
    }
    if (command == "NOOP") {
        return "250 2.0.0 done\r\n";
    }
    if (command == "QUIT") {
        state_ = State::Over;
        return "221 2.0.0 good-bye\r\n";
    }
    return answerToMail(command, argument);
}

std::string SmtpConversation::answerToMail(const std::string& command, std::string_view argument) {
    if (command == "MAIL") {
        return sender(argument);
    }
    if (command == "RCPT") {
        return recipient(argument);
    }
    if (command == "DATA") {
        return startText();
    }
    if (command == "RSET") {
        forgetMessage();
        return "250 2.0.0 forgotten\r\n";
    }
    return "500 5.5.1 not known\r\n";
}

std::string SmtpConversation::hello(const std::string& command, std::string_view name) {
    if (name.empty() || !isVisible(name)) {
        return "501 5.5.4 your name is needed\r\n";
    }
    clientName_ = name;
    extended_ = command == "EHLO";
    state_ = State::Sender;
    forgetMessage();
    if (!extended_) {
        return "250 " + service_.hostName + "\r\n";
    }
    return capabilities();
}

std::string SmtpConversation::capabilities() const {
    std::string lines = "250-" + service_.hostName + "\r\n250-SIZE " +
                        std::to_string(Mailbox::kMaximumMessageBytes) +
                        "\r\n250-8BITMIME\r\n250-ENHANCEDSTATUSCODES\r\n";
    if (service_.features.startTls && encryption_ == Encryption::None) {
        lines += "250-STARTTLS\r\n";
    }
    for (const std::string& capability : logOn_.capabilities()) {
        lines += "250-" + capability + "\r\n";
    }
    return lines + "250 PIPELINING\r\n";
}

std::string SmtpConversation::inviteEncryption(std::string_view argument) {
    if (!argument.empty()) {
        return "501 5.5.4 nothing stands behind STARTTLS\r\n";
    }
    if (encryption_ == Encryption::Begun) {
        return "503 5.5.1 this is encrypted already\r\n";
    }
    encryption_ = Encryption::Invited;
    return "220 2.0.0 begin TLS\r\n";
}

std::string SmtpConversation::logOn(std::string_view argument) {
    if (lacksEncryption()) {
        return std::string(kEncryptionFirst);
    }
    return state_ == State::Sender && extended_ ? logOn_.begin(argument) : std::string(kOutOfOrder);
}

/** True when nothing but STARTTLS leads on. */
bool SmtpConversation::lacksEncryption() const {
    return service_.features.demandsEncryption && encryption_ == Encryption::None;
}

std::string SmtpConversation::sender(std::string_view argument) {
    if (state_ != State::Sender) {
        return std::string(kOutOfOrder);
    }
    if (lacksEncryption()) {
        return std::string(kEncryptionFirst);
    }
    if (service_.features.demandsLogOn && !logOn_.isAdmitted()) {
        return "530 5.7.0 log on first\r\n";
    }
    if (!pathOf(argument, "FROM:")) {
        return "501 5.1.7 that is no sender\r\n";
    }
    const std::size_t bytes = announcedBytesOf(argument);
    if (bytes > Mailbox::kMaximumMessageBytes) {
        return std::string(kTooLarge);
    }
    announcedBytes_ = bytes;
    state_ = State::Recipients;
    return "250 2.1.0 sender taken\r\n";
}

std::string SmtpConversation::recipient(std::string_view argument) {
    if (state_ != State::Recipients) {
        return std::string(kOutOfOrder);
    }
    const auto path = pathOf(argument, "TO:");
    const std::size_t at = path ? path->rfind('@') : std::string_view::npos;
    if (!path || at == std::string_view::npos || at == 0 || at + 1 == path->size()) {
        return "501 5.1.3 that is no recipient\r\n";
    }
    if (recipients_.size() == kMaximumRecipients) {
        return "452 4.5.3 too many recipients\r\n";
    }
    recipients_.emplace_back(*path);
    return "250 2.1.5 recipient taken\r\n";
}

std::string SmtpConversation::startText() {
    if (state_ != State::Recipients) {
        return std::string(kOutOfOrder);
    }
    if (recipients_.empty()) {
        return "554 5.5.1 no recipient\r\n";
    }
    state_ = State::Text;
    text_ = IncomingText(Mailbox::kMaximumMessageBytes);
    text_.expect(announcedBytes_);
    return "354 the message, then a dot on a line of its own\r\n";
}

std::string SmtpConversation::endText() {
    const bool tooLarge = text_.isTooLarge();
    const bool taken =
        tooLarge || service_.take({clientName_, extended_, std::move(recipients_), text_.takeLines(),
                                   encryption_ == Encryption::Begun, logOn_.isAdmitted()});
    forgetMessage();
    if (tooLarge) {
        return std::string(kTooLarge);
    }
    return taken ? "250 2.0.0 message taken\r\n" : "452 4.3.1 the mailbox is full\r\n";
}

void SmtpConversation::forgetMessage() {
    if (state_ != State::Hello) {
        state_ = State::Sender;
    }
    announcedBytes_ = 0;
    recipients_.clear();
    text_ = IncomingText();
}

} // namespace mailserver
