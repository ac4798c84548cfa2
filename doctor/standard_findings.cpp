#include "doctor/standard_findings.h"

#include "message/standard_reader.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QString>

#include <string>

namespace doctor {

namespace {
/** The line above a part that is shownDecoded as it came. */
constexpr std::string_view kUndecoded = "[This part cannot be decoded.]";

std::string headerOf(const MessageSeen& message) {
    std::string header;
    for (const poplib::HeaderLine& line : message.header) {
        header.append(line.field).append(line.separator).append(line.value).append("\r\n");
    }
    return header;
}

QString shownDecoded(const std::string& field) {
    return platform::withControlsVisible(platform::fromBytes(field));
}
} // namespace

std::vector<Finding> standardFindingsOf(const MessageSeen& message) {
    const std::string header = headerOf(message);
    StandardMessage read;
    if (platform::errorNumberOf([&] { read = standardReader().read(header, message.body); }) != 0) {
        return {};
    }
    Finding finding;
    finding.grade = Grade::Met;
    finding.about = QStringLiteral("message");
    finding.message = message.number;
    finding.from = shownDecoded(read.fields.from);
    finding.subject = shownDecoded(read.fields.subject);
    finding.size = message.size;
    if (read.text.find(kUndecoded) != std::string::npos) {
        finding.text = QStringLiteral("A part of it cannot be decoded, and is shownDecoded as it came.");
        finding.advice = QStringLiteral("Ask the sender for it once more, as plain text.");
        return {finding};
    }
    const bool isEmpty = read.text.find_first_not_of(" \t\r\n") == std::string::npos;
    if (isEmpty && message.isWhole) {
        finding.text = read.attachments.empty()
                           ? QStringLiteral("It opens empty: there is no text in it.")
                           : QStringLiteral("It opens empty: all that it has is attached.");
        finding.advice = read.attachments.empty() ? QStringLiteral("Ask the sender what it was to say.")
                                                  : QStringLiteral("Save what is attached.");
        return {finding};
    }
    return {};
}

} // namespace doctor
