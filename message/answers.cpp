#include "message/answers.h"

#include "message/forwarded_text.h"
#include "message/safe_file_name.h"
#include "platform/text.h"

#include <utility>

namespace {
QString answerMark() {
    return QStringLiteral("RE: ");
}

QString forwardMark() {
    return QStringLiteral("Fwd: ");
}

bool isAnswerAlready(std::string_view subject) {
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
QString fileNameOf(const DecodedMessage& message) {
    constexpr std::size_t mostBytes = 100;
    const std::string_view subject = message.subject;
    const std::string_view start = subject.substr(0, platform::wholeCharacters(subject, mostBytes));
    return safeFileName(platform::fromBytes(start)) + QStringLiteral(".eml");
}
} // namespace

Answer answerTo(const email::MessageSummary& message) {
    return {message.From, answerMark(), message.Subject, {}};
}

Answer answerTo(const DecodedMessage& message) {
    Answer answer{
        message.answerTo, isAnswerAlready(message.subject) ? QString() : answerMark(), message.subject, {}};
    answer.origin.inReplyTo = message.answered.messageId;
    answer.origin.references = message.answered.references;
    return answer;
}

Answer handingOn(const email::MessageSummary& message) {
    return {{}, forwardMark(), message.Subject, forwardedText(message)};
}

Answer handingOn(const DecodedMessage& message, std::string_view shownText, bool withOriginal) {
    Answer answer{{}, forwardMark(), message.subject, {}};
    answer.text = forwardedText(onOneLine(message.date), onOneLine(message.from), onOneLine(message.subject),
                                shownText);
    if (withOriginal && message.answered.original) {
        answer.origin.original = message.answered.original;
        answer.origin.originalName = fileNameOf(message);
    }
    return answer;
}
