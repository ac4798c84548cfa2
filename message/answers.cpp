#include "message/answers.h"

#include "message/forwarded_text.h"
#include "message/mail_mode.h"
#include "message/safe_file_name.h"
#include "platform/text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {
QString answerMark() {
    return QStringLiteral("RE: ");
}

QString forwardMark() {
    return QStringLiteral("Fwd: ");
}

bool isAnswerAlready(std::string_view subject) {
    subject.remove_prefix(std::min(subject.find_first_not_of(' '), subject.size()));
    return platform::upperCase(subject.substr(0, 3)) == "RE:";
}

/** A field on one line, whatever a stranger has encoded in it. */
std::string onOneLine(std::string_view field) {
    std::string line(field);
    for (char& byte : line) {
        byte = byte == '\r' || byte == '\n' || byte == '\0' ? ' ' : byte;
    }
    return line;
}

/** The name of the file that a message becomes: its subject, or the start of it. */
QString fileNameOf(std::string_view subject) {
    constexpr std::size_t mostBytes = 100;
    const std::string_view start = subject.substr(0, platform::wholeCharacters(subject, mostBytes));
    return safeFileName(platform::fromBytes(start)) + QStringLiteral(".eml");
}

bool isHouse() {
    return mailMode() == MailMode::House;
}
} // namespace

Answer answerTo(const OpenedMessage& message) {
    const std::string& subject = message.summary.Subject;
    if (isHouse()) {
        return {message.summary.From, answerMark(), subject, {}};
    }
    Answer answer{message.answerTo, isAnswerAlready(subject) ? QString() : answerMark(), subject, {}};
    answer.origin.inReplyTo = message.answered.messageId;
    answer.origin.references = message.answered.references;
    return answer;
}

Answer handingOn(const OpenedMessage& message, bool withOriginal) {
    const email::MessageSummary& summary = message.summary;
    if (isHouse()) {
        return {{}, forwardMark(), summary.Subject, forwardedText(summary)};
    }
    Answer answer{{}, forwardMark(), summary.Subject, {}};
    answer.text = forwardedText(onOneLine(summary.Date), onOneLine(summary.From), onOneLine(summary.Subject),
                                message.shownText());
    if (withOriginal && message.answered.original) {
        answer.origin.original = message.answered.original;
        answer.origin.originalName = fileNameOf(summary.Subject);
    }
    return answer;
}
