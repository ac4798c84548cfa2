#include "components/smtplib/message_header.h"

#include "components/smtplib/folded_field.h"
#include "components/smtplib/wire_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace smtplib {

namespace {
namespace errors = platform::errors;

[[noreturn]] void refuseLine() {
    throw platform::RuntimeError(errors::BadHeaderLine);
}

bool isGraphic(char character) noexcept {
    return character > ' ' && character <= '~';
}

bool isSpaceOrTab(char character) noexcept {
    return character == ' ' || character == '\t';
}

bool isFieldOfOurs(std::string_view name) {
    constexpr std::array<std::string_view, 6> names{"FROM", "TO", "CC", "SUBJECT", "DATE", "MESSAGE-ID"};
    return std::find(names.begin(), names.end(), platform::upperCase(name)) != names.end();
}

void checkLine(std::string_view line, bool isFirst) {
    const bool characters = std::all_of(line.begin(), line.end(), [](char character) {
        return isGraphic(character) || isSpaceOrTab(character);
    });
    // A line of nothing but spaces may be taken for the end of the header.
    const bool visible = std::any_of(line.begin(), line.end(), isGraphic);
    if (!characters || !visible || line.size() > kMaximumTextLineBytes) {
        refuseLine();
    }
    if (isSpaceOrTab(line.front()) && !isFirst) {
        return;
    }
    const std::string_view name = line.substr(0, line.find(':'));
    const bool named =
        !name.empty() && name.size() < line.size() && std::all_of(name.begin(), name.end(), isGraphic);
    if (!named || isFieldOfOurs(name)) {
        refuseLine();
    }
}

std::string addressField(const std::string& name, const std::vector<Address>& addresses) {
    FoldedField field(name);
    for (const Address& address : addresses) {
        std::vector<std::string> units = unitsOfName(address.displayName, address.nameWasQuoted);
        units.push_back(units.empty() ? ' ' + address.mailbox() : " <" + address.mailbox() + '>');
        if (&address != &addresses.back()) {
            units.back() += ',';
        }
        field.addTogether(units);
    }
    return field.lines();
}

std::string subjectField(const std::string& subject) {
    if (subject.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
        throw platform::RuntimeError(errors::FieldHoldsLineEnd);
    }
    FoldedField field("Subject:");
    for (const std::string& unit : unitsOfText(subject)) {
        field.add(unit);
    }
    return field.lines();
}
} // namespace

std::string messageHeader(const HeaderFields& fields) {
    std::string header = addressField("From:", {fields.sender});
    if (!fields.recipients.empty()) {
        header += addressField("To:", fields.recipients);
    }
    if (!fields.copies.empty()) {
        header += addressField("Cc:", fields.copies);
    }
    header += subjectField(fields.subject);
    header += "Date: " + dateText(fields.date) + "\r\n";
    if (!fields.messageId.empty()) {
        if (!isMessageId(fields.messageId)) {
            refuseLine();
        }
        header += "Message-ID: " + fields.messageId + "\r\n";
    }
    checkAdditionalLines(fields.additionalLines);
    return header + fields.additionalLines;
}

bool isMessageId(std::string_view id) {
    if (id.size() < 5 || id.size() > kMaximumTextLineBytes / 2 || !id.starts_with('<') ||
        !id.ends_with('>')) {
        return false;
    }
    id = id.substr(1, id.size() - 2);
    const std::size_t sign = id.find('@');
    return sign != std::string_view::npos && sign > 0 && sign + 1 < id.size() &&
           std::all_of(id.begin(), id.end(), isGraphic) && id.find_first_of("<>") == std::string_view::npos;
}

std::string dateText(const QDateTime& date) {
    const int minutes = date.offsetFromUtc() / 60;
    const QString zone = QStringLiteral("%1%2%3")
                             .arg(QLatin1Char(minutes < 0 ? '-' : '+'))
                             .arg(std::abs(minutes) / 60, 2, 10, QLatin1Char('0'))
                             .arg(std::abs(minutes) % 60, 2, 10, QLatin1Char('0'));
    const QString text = QLocale::c().toString(date, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss "));
    return (text + zone).toStdString();
}

void checkAdditionalLines(std::string_view lines) {
    for (bool isFirst = true; !lines.empty(); isFirst = false) {
        const std::size_t end = lines.find("\r\n");
        if (end == std::string_view::npos) {
            refuseLine();
        }
        checkLine(lines.substr(0, end), isFirst);
        lines.remove_prefix(end + 2);
    }
}

} // namespace smtplib
