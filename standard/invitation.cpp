#include "standard/invitation.h"

#include "standard/date_text.h"
#include "standard/header_fields.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <optional>
#include <vector>

namespace standard {

namespace {
/** Events of one calendar that are told of. */
constexpr std::size_t kMostEvents = 20;
/** Bytes of a summary or a place. */
constexpr std::size_t kLongestValue = 2'000;

/** A content line (RFC 5545 section 3.1). */
struct ContentLine {
    std::string name;
    std::string parameters;
    std::string value;
};

ContentLine contentLine(std::string_view line) {
    bool quoted = false;
    const auto colon = std::find_if(line.begin(), line.end(), [&quoted](char letter) {
        quoted = quoted != (letter == '"');
        return letter == ':' && !quoted;
    });
    const auto length = static_cast<std::size_t>(colon - line.begin());
    const std::string_view front = line.substr(0, length);
    const std::size_t nameEnd = std::min(front.find(';'), front.size());
    return {lowerCase(front.substr(0, nameEnd)), std::string(front.substr(nameEnd)),
            std::string(line.substr(std::min(length + 1, line.size())))};
}

/** The lines, each with those that continue it. */
std::vector<std::string> unfoldedLines(std::string_view calendar) {
    constexpr std::size_t most = 20'000;
    std::vector<std::string> lines;
    while (!calendar.empty() && lines.size() < most) {
        const std::size_t end = calendar.find('\n');
        std::string_view line = calendar.substr(0, end);
        calendar.remove_prefix(end == std::string_view::npos ? calendar.size() : end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        const bool continues = line.starts_with(' ') || line.starts_with('\t');
        if (continues && !lines.empty()) {
            lines.back() += line.substr(1);
        } else {
            lines.emplace_back(line);
        }
    }
    return lines;
}

/** A value on one line (RFC 5545 section 3.3.11). */
std::string plainValue(std::string_view value) {
    std::string text;
    for (std::size_t at = 0; at < value.size() && text.size() < kLongestValue; ++at) {
        const bool escapes = value[at] == '\\' && at + 1 < value.size();
        at += escapes ? 1 : 0;
        text.push_back(escapes && (value[at] == 'n' || value[at] == 'N') ? ' ' : value[at]);
    }
    return std::string(trimmed(text));
}

/** The value of a parameter, without its quotes; empty for none. */
std::string_view parameterOf(std::string_view parameters, std::string_view name) {
    while (!parameters.empty()) {
        parameters.remove_prefix(1);
        const std::size_t end = std::min(parameters.find(';'), parameters.size());
        std::string_view one = parameters.substr(0, end);
        parameters.remove_prefix(end);
        if (sameWord(one.substr(0, name.size()), name) && one.substr(name.size()).starts_with('=')) {
            one.remove_prefix(name.size() + 1);
            return one.starts_with('"') && one.ends_with('"') && one.size() > 1
                       ? one.substr(1, one.size() - 2)
                       : one;
        }
    }
    return {};
}

/** The zone of that name: IANA's, also behind a maker's prefix, or one of Windows; not valid for none. */
QTimeZone zoneNamed(std::string_view name) {
    constexpr std::size_t longest = 100;
    QByteArray id(name.data(), static_cast<qsizetype>(std::min(name.size(), longest)));
    const QByteArray ofWindows = QTimeZone::windowsIdToDefaultIanaId(id);
    if (!ofWindows.isEmpty()) {
        return QTimeZone(ofWindows);
    }
    while (!QTimeZone::isTimeZoneIdAvailable(id)) {
        if (!id.contains('/')) {
            return {};
        }
        id = id.sliced(id.indexOf('/') + 1);
    }
    return QTimeZone(id);
}

std::string written(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm")).toStdString();
}

/** A time in the zone of that name; empty stands for local time. */
std::string timeText(const QDate& date, const QTime& time, std::string_view zoneName) {
    const QDateTime asGiven(date, time);
    if (zoneName.empty()) {
        return written(asGiven);
    }
    const std::string name(zoneName.substr(0, 100));
    const QTimeZone zone = zoneNamed(zoneName);
    if (!zone.isValid()) {
        return written(asGiven) + " (" + name + ")";
    }
    const std::string local = localText(QDateTime(date, time, zone));
    return local == written(asGiven) ? local : local + " (" + written(asGiven) + " " + name + ")";
}

/** A DTSTART line's time (RFC 5545 sections 3.3.4 and 3.3.5); the value itself when it is none. */
std::string whenText(const ContentLine& start) {
    const QString value = QString::fromStdString(start.value).trimmed().toUpper();
    const QDate date = QDate::fromString(value.left(8), QStringLiteral("yyyyMMdd"));
    if (!date.isValid()) {
        return plainValue(start.value);
    }
    if (value.size() == 8) {
        return date.toString(Qt::ISODate).toStdString();
    }
    const QTime time = QTime::fromString(value.mid(9, 6), QStringLiteral("HHmmss"));
    if (!time.isValid()) {
        return plainValue(start.value);
    }
    if (value.endsWith(u'Z')) {
        return localText(QDateTime(date, time, Qt::UTC));
    }
    return timeText(date, time, parameterOf(start.parameters, "TZID"));
}

struct Event {
    std::string summary;
    std::string place;
    std::string when;
};

/** Reads the events; what belongs to alarms and zones inside and beside them is passed over. */
std::vector<Event> eventsOf(std::string_view calendar) {
    std::vector<Event> events;
    std::vector<std::string> open;
    for (const std::string& text : unfoldedLines(calendar)) {
        const ContentLine line = contentLine(text);
        const std::string kind = lowerCase(trimmed(line.value));
        if (line.name == "begin") {
            open.push_back(kind);
            if (kind == "vevent" && events.size() < kMostEvents) {
                events.emplace_back();
            } else if (kind == "vevent") {
                break;
            }
        } else if (line.name == "end" && !open.empty()) {
            open.pop_back();
        } else if (!open.empty() && open.back() == "vevent" && !events.empty()) {
            Event& event = events.back();
            if (line.name == "summary" && event.summary.empty()) {
                event.summary = plainValue(line.value);
            } else if (line.name == "location" && event.place.empty()) {
                event.place = plainValue(line.value);
            } else if (line.name == "dtstart" && event.when.empty()) {
                event.when = whenText(line);
            }
        }
    }
    return events;
}
} // namespace

std::string invitationText(std::string_view calendar) {
    std::string text;
    const auto add = [&text](std::string_view title, const std::string& value) {
        if (!value.empty()) {
            text.append(title).append(value).append("\r\n");
        }
    };
    for (const Event& event : eventsOf(calendar)) {
        add({}, event.summary);
        add("Where: ", event.place);
        add("When: ", event.when);
    }
    return text;
}

} // namespace standard
