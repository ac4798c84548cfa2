#include "doctor/message_findings.h"

#include "components/netcodelib/part_decoder.h"
#include "doctor/standard_findings.h"
#include "email/box_texts.h"
#include "email/header_events.h"
#include "message/mime_parser.h"
#include "message/part_headers.h"
#include "message/reader_in_use.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "retrieval/log_in_failures.h"

#include <QRegularExpression>

#include <algorithm>
#include <string_view>
#include <utility>

namespace doctor {

namespace errors = platform::errors;

namespace {
constexpr std::size_t kShownFieldBytes = 300;

QString shown(const std::string& field) {
    return platform::withControlsVisible(platform::startFromBytes(field, kShownFieldBytes));
}

bool holds(std::string_view text, std::string_view wanted) {
    return text.find(wanted) != std::string_view::npos;
}

/** Whether the message says somewhere that it is encoded so; `upper` is all of it in capitals. */
bool declares(const std::string& upper, std::string_view encoding) {
    constexpr std::string_view field = "CONTENT-TRANSFER-ENCODING:";
    for (std::size_t at = upper.find(field); at != std::string::npos; at = upper.find(field, at + 1)) {
        const std::string_view line = std::string_view(upper).substr(at, upper.find('\n', at) - at);
        if (holds(line, encoding)) {
            return true;
        }
    }
    return false;
}

/** Whether the text has a line of base64 that no person has written. */
bool looksLikeBase64(std::string_view text) {
    constexpr std::size_t least = 40;
    constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=\r";
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.size() >= least && line.find_first_not_of(letters) == std::string_view::npos) {
            return true;
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return false;
}

bool looksQuotedPrintable(const std::string& text) {
    static const QRegularExpression trace(QStringLiteral("=(?:[0-9A-F]{2}|\\r?\\n)"));
    return trace.match(QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()))).hasMatch();
}

/** One message, as the program's own way of reading takes it. */
class HouseMessage {
  public:
    explicit HouseMessage(const MessageSeen& seen) : seen_(seen) {}

    std::vector<Finding> examine() {
        if (list()) {
            addRow();
            open();
        }
        return std::move(findings_);
    }

  private:
    Finding& add(Grade grade, const QString& text, const QString& advice) {
        Finding finding;
        finding.grade = grade;
        finding.about = QStringLiteral("message");
        finding.text = text;
        finding.advice = advice;
        finding.message = seen_.number;
        finding.from = shown(summary_.From);
        // The list's mark for a message without a subject is none.
        finding.subject = summary_.Subject == "'" ? QString() : shown(summary_.Subject);
        finding.size = seen_.size;
        findings_.push_back(std::move(finding));
        return findings_.back();
    }

    /** Fills the summary as a log-in does; false when that ends the log-in. */
    bool list() {
        email::resetForListing(summary_);
        summary_.Size = seen_.size.value_or(0);
        email::HeaderEvents events;
        int error = 0;
        for (const poplib::HeaderLine& line : seen_.header) {
            const int raised = platform::errorNumberOf([&] { events.add(summary_, line.field, line.value); });
            error = error == 0 ? raised : error;
            summary_.RawHeader.append(line.field).append(line.separator).append(line.value).append("\r\n");
        }
        if (error == 0) {
            return true;
        }
        Finding& finding = add(
            Grade::Stops,
            QStringLiteral("It ends every log-in to this mailbox: its boundary is not between two quotes."),
            QStringLiteral("Take it out of the mailbox with another program or at the server, or start with "
                           "--mail=standard."));
        finding.number = error;
        finding.box = boxOfFailedLogIn(error);
        return false;
    }

    void addRow() {
        static const QRegularExpression encodedWord(QStringLiteral("=\\?[^?\\s]+\\?[bBqQ]\\?[^?\\s]*\\?="));
        const QString standard = QStringLiteral("Start with --mail=standard to have it decoded.");
        if (encodedWord.match(shown(summary_.Subject)).hasMatch() ||
            encodedWord.match(shown(summary_.From)).hasMatch()) {
            add(Grade::Met, QStringLiteral("Its sender or subject is shown encoded, in the list too."),
                standard);
        }
        if (summary_.Subject == "'" || summary_.Date == "'") {
            add(Grade::Met, QStringLiteral("It has no subject or no date: its row shows ' in that place."),
                {});
        }
    }

    void open() {
        summary_.BodyText = seen_.body;
        const ReadMessage read = readMessage(summary_);
        const QString forward = QStringLiteral("Forward shows everything; so does --mail=standard.");
        if (!read.text && read.error == 0) {
            add(Grade::Met,
                QStringLiteral(
                    "It opens empty, after a box: plain text of more than 32000 bytes is not shown."),
                forward)
                .box = email::boxOfUnshowableMessage();
            return;
        }
        if (read.error != 0) {
            Finding& finding = add(
                Grade::Met, QStringLiteral("It cannot be opened: a part is not as it should be."), forward);
            finding.number = read.error;
            finding.box = email::boxOfFailedOpening(read.error);
            return;
        }
        addText(*read.text);
        addAttachments(read);
        addParts();
    }

    void addText(const std::string& text) {
        const QString forward = QStringLiteral("Forward shows everything; --mail=standard decodes it.");
        const std::string upper =
            platform::upperCase(summary_.HeaderText) + platform::upperCase(summary_.BodyText);
        const bool isEmpty = text.find_first_not_of(" \t\r\n") == std::string::npos;
        if (isEmpty && seen_.isWhole && summary_.BodyText.find_first_not_of(" \t\r\n") != std::string::npos) {
            add(Grade::Met, QStringLiteral("It opens empty: its text is in a part that is not shown."),
                forward);
        }
        if ((declares(upper, "QUOTED-PRINTABLE") && looksQuotedPrintable(text)) ||
            (declares(upper, "BASE64") && looksLikeBase64(text))) {
            add(Grade::Met, QStringLiteral("Its text is shown encoded."), forward);
        }
        const bool saysHtml = holds(upper, "TEXT/HTML");
        if (saysHtml && holds(text, "</")) {
            add(Grade::Met, QStringLiteral("Its HTML is shown as source."), forward);
        }
    }

    void addAttachments(const ReadMessage& read) {
        if (read.attachments.size() > 1) {
            add(Grade::Met,
                QStringLiteral("It has %1 attachments, of which the last one alone can be saved.")
                    .arg(read.attachments.size()),
                QStringLiteral("Start with --mail=standard to have all of them."));
        }
        if (read.attachments.empty() || !seen_.isWhole) {
            return;
        }
        const int error = platform::errorNumberOf([&read] {
            netcodelib::PartDecoder decoder;
            std::string bytes;
            // As the attachment's file has it.
            decoder.append(withoutPartHeaders(read.attachments.back().part), bytes);
            decoder.append("\r\n", bytes);
            decoder.finish(bytes);
        });
        if (error != 0) {
            Finding& finding =
                add(Grade::Met,
                    QStringLiteral("Its attachment is not base64, or not whole, and cannot be saved."),
                    QStringLiteral("Forward shows its text; ask the sender for it once more, packed."));
            finding.number = error;
            finding.box = email::boxOfFailedSaving(error);
        }
    }

    void addParts() {
        if (summary_.Boundary.empty()) {
            return;
        }
        const auto parts = partsOf(summary_.BodyText, summary_.Boundary, kMaximumParts + 1);
        if (parts.size() > kMaximumParts) {
            add(Grade::Met,
                QStringLiteral("It has more than %1 parts, and further ones are ignored.").arg(kMaximumParts),
                QStringLiteral("Start with --mail=standard."));
        }
        if (std::any_of(parts.begin(), parts.end(), losesText)) {
            add(Grade::Met,
                QStringLiteral("Its text has a word that belongs to the headers of a part, such as name=; "
                               "what stands before "
                               "the end of that line is not shown."),
                QStringLiteral("Forward shows everything; so does --mail=standard."));
        }
    }

    /** Whether the text of the part has a key that the part-header stripper looks for. */
    static bool losesText(std::string_view part) {
        part.remove_prefix(std::min(part.find("Content-Type:"), part.size()));
        const std::size_t end = part.find("\r\n\r\n");
        // A part with parts of its own has their headers in it.
        if (!part.starts_with("Content-Type: text/") || end == std::string_view::npos) {
            return false;
        }
        const std::string_view text = part.substr(end);
        return std::any_of(kPartHeaderKeys.begin(), kPartHeaderKeys.end(),
                           [text](std::string_view key) { return holds(text, key); });
    }

    const MessageSeen& seen_;
    email::MessageSummary summary_;
    std::vector<Finding> findings_;
};
} // namespace

std::vector<Finding> findingsOfSize(int number, std::optional<std::int32_t> size) {
    const bool tooLarge = size && *size >= poplib::Pop3Session::kMaximumMessageBytes;
    if (size && !tooLarge) {
        return {};
    }
    Finding finding;
    finding.grade = Grade::Met;
    finding.about = QStringLiteral("message");
    finding.message = number;
    finding.size = size;
    finding.number = tooLarge ? errors::OutOfMemory : errors::MessageNotGiven;
    finding.box = email::boxOfFailedOpening(finding.number);
    finding.text = tooLarge ? QStringLiteral("It is too large to be opened.")
                            : QStringLiteral("The server does not tell its size, so it cannot be opened.");
    finding.advice = tooLarge ? QStringLiteral("Fetch it with another program.")
                              : QStringLiteral("Look into the server's log, and at the mailbox.");
    return {finding};
}

std::vector<Finding> findingsOf(const MessageSeen& message, MailMode mode) {
    std::vector<Finding> findings = findingsOfSize(message.number, message.size);
    if (!findings.empty()) {
        return findings;
    }
    return mode == MailMode::House ? HouseMessage(message).examine() : standardFindingsOf(message);
}

} // namespace doctor
