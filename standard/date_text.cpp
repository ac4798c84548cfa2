#include "standard/date_text.h"

#include "standard/header_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace standard {

namespace {
constexpr int kSecondsInMinute = 60;
constexpr int kSecondsInHour = 3600;
/** No date has more; a field of megabytes is not cut into words. */
constexpr std::size_t kLongestDate = 200;

std::optional<int> number(std::string_view digits) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole && value >= 0 ? std::optional(value) : std::nullopt;
}

/** The month of an English name of three letters or more, from 1 on; 0 for none. */
int monthOf(std::string_view word) {
    constexpr std::array<std::string_view, 12> names = {"january",   "february", "march",    "april",
                                                        "may",       "june",     "july",     "august",
                                                        "september", "october",  "november", "december"};
    const std::string lower = lowerCase(word);
    const auto* const found = std::find_if(names.begin(), names.end(), [&lower](std::string_view name) {
        return lower.size() >= 3 && name.starts_with(lower);
    });
    return found == names.end() ? 0 : static_cast<int>(found - names.begin()) + 1;
}

/** RFC 5322 section 4.3: years of two and three digits. */
int wholeYear(int year, std::size_t digits) {
    constexpr int firstOfLastCentury = 50;
    if (digits <= 2) {
        return year < firstOfLastCentury ? year + 2000 : year + 1900;
    }
    return digits == 3 ? year + 1900 : year;
}

/** Hours, minutes and perhaps seconds with colons between them; a leap second counts as the one before. */
std::optional<QTime> timeOf(std::string_view word) {
    std::array<int, 3> parts{};
    std::size_t count = 0;
    while (true) {
        const std::size_t colon = word.find(':');
        const auto part = number(word.substr(0, colon));
        if (!part || count == parts.size()) {
            return std::nullopt;
        }
        parts.at(count++) = *part;
        if (colon == std::string_view::npos) {
            break;
        }
        word.remove_prefix(colon + 1);
    }
    const int seconds = parts[2] == kSecondsInMinute ? kSecondsInMinute - 1 : parts[2];
    const QTime time(parts[0], parts[1], seconds);
    return count >= 2 && time.isValid() ? std::optional(time) : std::nullopt;
}

/** Seconds east of Greenwich; nothing for a word that is no zone. */
std::optional<int> zoneOf(std::string_view word) {
    constexpr std::array<std::pair<std::string_view, int>, 8> american = {{{"EDT", -4},
                                                                           {"EST", -5},
                                                                           {"CDT", -5},
                                                                           {"CST", -6},
                                                                           {"MDT", -6},
                                                                           {"MST", -7},
                                                                           {"PDT", -7},
                                                                           {"PST", -8}}};
    if (word.size() >= 3 && (word.front() == '+' || word.front() == '-')) {
        std::string digits(word.substr(1));
        std::erase(digits, ':');
        const auto value = number(digits);
        if (!value || digits.size() > 4 || digits.size() == 3) {
            return std::nullopt;
        }
        const int hours = digits.size() == 2 ? *value : *value / 100;
        const int minutes = digits.size() == 2 ? 0 : *value % 100;
        const int seconds = hours * kSecondsInHour + minutes * kSecondsInMinute;
        constexpr int most = 18 * kSecondsInHour;
        return seconds > most || minutes >= 60 ? std::nullopt
                                               : std::optional(word.front() == '-' ? -seconds : seconds);
    }
    const auto* const found = std::find_if(american.begin(), american.end(),
                                           [&](const auto& zone) { return sameWord(zone.first, word); });
    if (found != american.end()) {
        return found->second * kSecondsInHour;
    }
    const bool isName = !word.empty() && std::all_of(word.begin(), word.end(), [](char letter) {
        return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
    });
    return isName ? std::optional(0) : std::nullopt;
}

/** The words between blanks and commas; comments are left out. */
std::vector<std::string> wordsOf(std::string_view field) {
    std::vector<std::string> words(1);
    int depth = 0;
    for (const char letter : field) {
        depth += letter == '(' ? 1 : 0;
        const bool parts = depth > 0 || letter == ' ' || letter == '\t' || letter == ',';
        depth -= letter == ')' && depth > 0 ? 1 : 0;
        if (!parts) {
            words.back().push_back(letter);
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    if (words.back().empty()) {
        words.pop_back();
    }
    return words;
}

/** Parts words as 21-Nov-2026 and 17:42:00+0100, which some programs write together. */
std::vector<std::string> partedWords(const std::vector<std::string>& words) {
    std::vector<std::string> parted;
    for (const std::string& word : words) {
        const std::size_t sign = word.find_first_of("+-", 1);
        const bool isTime = word.find(':') < sign;
        if (sign == std::string::npos || (!isTime && !number(word.substr(0, sign)))) {
            parted.push_back(word);
        } else if (isTime) {
            parted.push_back(word.substr(0, sign));
            parted.push_back(word.substr(sign));
        } else {
            const std::size_t second = std::min(word.find('-', sign + 1), word.size() - 1);
            parted.push_back(word.substr(0, sign));
            parted.push_back(word.substr(sign + 1, second - sign - 1));
            parted.push_back(word.substr(second + 1));
        }
    }
    return parted;
}

/** What the words of a date have told so far. */
struct Told {
    std::optional<int> day;
    std::optional<int> month;
    std::optional<int> year;
    std::optional<QTime> time;
    std::optional<int> zone;

    void take(const std::string& word);
    void takeHalfOfDay(bool afterNoon);
};

void Told::take(const std::string& word) {
    const auto value = number(word);
    if (word.find(':') != std::string::npos && !time) {
        time = timeOf(word);
    } else if (value && word.size() <= 2 && !day) {
        day = value;
    } else if (value && word.size() <= 4 && !year) {
        year = wholeYear(*value, word.size());
    } else if (const int found = monthOf(word); found != 0 && !month) {
        month = found;
    } else if (time && (sameWord(word, "AM") || sameWord(word, "PM"))) {
        takeHalfOfDay(sameWord(word, "PM"));
    } else if (time && !zone) {
        zone = zoneOf(word);
    }
}

void Told::takeHalfOfDay(bool afterNoon) {
    constexpr int noon = 12;
    const int hour = time->hour() % noon + (afterNoon ? noon : 0);
    if (time->hour() <= noon) {
        time = QTime(hour, time->minute(), time->second());
    }
}

std::optional<QDateTime> moment(const QDate& date, const QTime& time, int zone) {
    if (!date.isValid()) {
        return std::nullopt;
    }
    return QDateTime(date, time, Qt::UTC).addSecs(-zone);
}

/** ISO 8601: a date, T or a blank, a time, perhaps with a fraction of seconds, perhaps a zone. */
std::optional<QDateTime> isoMoment(std::string_view field) {
    constexpr std::size_t dateLetters = 10;
    if (field.size() <= dateLetters || field[4] != '-' || field[7] != '-' ||
        (field[dateLetters] != 'T' && field[dateLetters] != 't' && field[dateLetters] != ' ')) {
        return std::nullopt;
    }
    const auto year = number(field.substr(0, 4));
    const auto month = number(field.substr(5, 2));
    const auto day = number(field.substr(8, 2));
    std::string_view rest = field.substr(dateLetters + 1);
    const std::string_view clock = rest.substr(0, rest.find_first_not_of("0123456789:"));
    rest.remove_prefix(clock.size());
    if (rest.starts_with('.') || rest.starts_with(',')) {
        rest = rest.substr(std::min(rest.find_first_not_of("0123456789", 1), rest.size()));
    }
    rest = trimmed(rest);
    const auto time = timeOf(clock);
    const auto zone = rest.empty() ? std::optional(0) : zoneOf(rest);
    if (!year || !month || !day || !time || !zone) {
        return std::nullopt;
    }
    return moment(QDate(*year, *month, *day), *time, *zone);
}
} // namespace

std::optional<QDateTime> momentOf(std::string_view field) {
    field = trimmed(field);
    if (field.size() > kLongestDate) {
        return std::nullopt;
    }
    if (auto found = isoMoment(field)) {
        return found;
    }
    Told told;
    for (const std::string& word : partedWords(wordsOf(field))) {
        told.take(word);
    }
    if (!told.day || !told.month || !told.year || !told.time) {
        return std::nullopt;
    }
    return moment(QDate(*told.year, *told.month, *told.day), *told.time, told.zone.value_or(0));
}

std::string localText(const QDateTime& moment) {
    return moment.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")).toStdString();
}

std::string dateText(std::string_view field) {
    const auto found = momentOf(field);
    return found ? localText(*found) : std::string(trimmed(field));
}

} // namespace standard
