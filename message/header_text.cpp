#include "message/header_text.h"

#include "platform/text.h"

#include <QByteArray>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace {
constexpr std::string_view kWordEnd = "?=";
constexpr std::string_view kInBase64 = "=?utf-8?B?";
constexpr std::string_view kInQ = "=?utf-8?Q?";

/**
 * Characters between the marks of an encoded word, so that the first word fits on a line of 76 behind
 * "Subject:" and a space (RFC 2047 section 2).
 */
constexpr std::size_t kMostInWord = 54;
/** Longest word that goes out as it stands. */
constexpr qsizetype kMostInPlainWord = 66;
/** Characters of one section of a parameter's value. */
constexpr std::size_t kMostInSection = 54;

bool isPrintableAscii(QChar character) {
    return character >= u' ' && character <= u'~';
}

bool isLetterOrDigit(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

/** Whether readers, whatever they do with spaces, show exactly this. */
bool readsAsItself(const QString& text) {
    if (!std::all_of(text.begin(), text.end(), isPrintableAscii) || text.startsWith(u' ') ||
        text.endsWith(u' ') || text.contains(QLatin1String("  ")) || text.contains(QLatin1String("=?"))) {
        return false;
    }
    qsizetype longest = 0;
    for (qsizetype begin = 0; begin <= text.size();) {
        const qsizetype space = text.indexOf(u' ', begin);
        const qsizetype end = space < 0 ? text.size() : space;
        longest = std::max(longest, end - begin);
        begin = end + 1;
    }
    return longest <= kMostInPlainWord;
}

std::string hex(char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {digits[value >> 4U], digits[value & 15U]};
}

/** The Q encoding for words in any place, also in a name before an address (RFC 2047 section 5). */
std::string inQ(std::string_view bytes) {
    constexpr std::string_view asTheyAre = "!*+-/";
    std::string text;
    for (const char byte : bytes) {
        if (byte == ' ') {
            text += '_';
        } else if (isLetterOrDigit(byte) || asTheyAre.find(byte) != std::string_view::npos) {
            text += byte;
        } else {
            text += '=' + hex(byte);
        }
    }
    return text;
}

std::string inBase64(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))
        .toBase64()
        .toStdString();
}

/** What belongs together: letters with their marks; single characters where that is too long for a word. */
std::vector<std::string> characterGroups(const QString& text, std::size_t mostBytes) {
    std::vector<std::string> groups;
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype begin = 0; begin < text.size();) {
        const qsizetype found = boundary.toNextBoundary();
        const qsizetype end = found > begin ? found : text.size();
        std::string group = platform::toBytes(text.sliced(begin, end - begin));
        while (group.size() > mostBytes) {
            const std::size_t cut = platform::wholeCharacters(group, mostBytes);
            groups.push_back(group.substr(0, cut));
            group.erase(0, cut);
        }
        groups.push_back(std::move(group));
        begin = end;
    }
    return groups;
}

using Groups = std::vector<std::string>;
using Encoding = std::string (*)(std::string_view);

std::string joined(const Groups& groups, std::size_t begin, std::size_t end) {
    std::string text;
    for (std::size_t at = begin; at < end; ++at) {
        text += groups[at];
    }
    return text;
}

/** Where the word that begins here has to end at the latest. */
std::size_t latestEnd(const Groups& groups, std::size_t begin, Encoding encoded) {
    std::size_t end = begin + 1;
    for (std::string content = groups[begin]; end < groups.size(); ++end) {
        content += groups[end];
        if (encoded(content).size() > kMostInWord) {
            break;
        }
    }
    return end;
}

/** Where a word in Q ends: behind a space where there is one, as some readers show a space between words. */
std::size_t endInQ(const Groups& groups, std::size_t begin) {
    const std::size_t latest = latestEnd(groups, begin, inQ);
    for (std::size_t end = latest; latest < groups.size() && end > begin; --end) {
        if (groups[end - 1] == " ") {
            return end;
        }
    }
    return latest;
}

/**
 * Where a word in base64 ends, so that no word but the last is padded: some readers join all words before
 * they decode them, and stop at the padding. Returns the begin when there is no such place.
 */
std::size_t endInBase64(const Groups& groups, std::size_t begin) {
    std::size_t end = latestEnd(groups, begin, inBase64);
    while (end < groups.size() && end > begin && joined(groups, begin, end).size() % 3 != 0) {
        --end;
    }
    return end;
}

/** The words with spaces between them; empty when the encoding does not do for this text. */
std::string wordsIn(const Groups& groups, std::string_view mark, Encoding encoded,
                    std::size_t (*endOfWord)(const Groups&, std::size_t)) {
    std::string words;
    for (std::size_t begin = 0; begin < groups.size();) {
        const std::size_t end = endOfWord(groups, begin);
        if (end == begin) {
            return {};
        }
        words.append(words.empty() ? "" : " ").append(mark);
        words.append(encoded(joined(groups, begin, end))).append(kWordEnd);
        begin = end;
    }
    return words;
}

std::string encodedWords(const QString& text) {
    constexpr std::size_t mostBytes = kMostInWord / 3; // in Q, a byte takes up to three characters
    const Groups groups = characterGroups(text, mostBytes);
    std::string shorter = wordsIn(groups, kInQ, inQ, endInQ);
    const std::string inOther = wordsIn(groups, kInBase64, inBase64, endInBase64);
    return !inOther.empty() && inOther.size() < shorter.size() ? inOther : shorter;
}

/** Percent-encoded where the byte is no attribute-char (RFC 2231 section 7). */
std::string inPercents(std::string_view bytes) {
    constexpr std::string_view asTheyAre = "!#$&+-.^_`{|}~";
    std::string text;
    for (const char byte : bytes) {
        const bool plain = isLetterOrDigit(byte) || asTheyAre.find(byte) != std::string_view::npos;
        text += plain ? std::string(1, byte) : '%' + hex(byte);
    }
    return text;
}
} // namespace

std::string headerText(const QString& text) {
    const QString whole = platform::withoutHalfPairs(text);
    return readsAsItself(whole) ? platform::toBytes(whole) : encodedWords(whole);
}

std::vector<std::string> extendedParameter(std::string_view name, const QString& value) {
    constexpr std::size_t mostBytes = kMostInSection / 3;
    std::vector<std::string> sections(1);
    for (const std::string& group : characterGroups(platform::withoutHalfPairs(value), mostBytes)) {
        const std::string text = inPercents(group);
        if (!sections.back().empty() && sections.back().size() + text.size() > kMostInSection) {
            sections.emplace_back();
        }
        sections.back() += text;
    }
    std::vector<std::string> units;
    for (std::size_t number = 0; number < sections.size(); ++number) {
        const bool isLast = number + 1 == sections.size();
        const std::string place = sections.size() == 1 ? "" : '*' + std::to_string(number);
        units.push_back(' ' + std::string(name) + place + "*=" + (number == 0 ? "utf-8''" : "") +
                        sections[number] + (isLast ? "" : ";"));
    }
    return units;
}
