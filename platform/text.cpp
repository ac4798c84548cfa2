#include "platform/text.h"

#include "platform/checked.h"

#include <QStringDecoder>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace platform {

namespace {
/** What Windows-1252 has where Latin-1 has its second set of control characters, 0x80 to 0x9F. */
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QString fromWindows1252(std::string_view bytes) {
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size()));
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        const bool high = code >= 0x80 && code < 0xA0;
        text.append(QChar(high ? kWindows1252High.at(code - 0x80U) : static_cast<char16_t>(code)));
    }
    return text;
}

bool continuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isInvisibleControl(char16_t code) {
    const bool bidirectional = code == 0x061C || code == 0x200B || (code >= 0x200E && code <= 0x200F) ||
                               (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F);
    return bidirectional || (code >= 0x7F && code < 0xA0) || code == 0xFEFF;
}

/** Spaces, a sign, digits with a point among or before them, an exponent, spaces. */
bool isDecimal(QStringView text) {
    const auto take = [&text](QStringView characters) {
        const bool taken = !text.isEmpty() && characters.contains(text.front());
        text = taken ? text.sliced(1) : text;
        return taken;
    };
    const auto takeAll = [&take](QStringView characters) {
        int count = 0;
        while (take(characters)) {
            ++count;
        }
        return count;
    };
    constexpr QStringView digits = u"0123456789";
    takeAll(u" ");
    take(u"+-");
    int found = takeAll(digits);
    if (take(u".")) {
        found += takeAll(digits);
    }
    if (found == 0) {
        return false;
    }
    if (take(u"eE")) {
        take(u"+-");
        if (takeAll(digits) == 0) {
            return false;
        }
    }
    takeAll(u" ");
    return text.isEmpty();
}
} // namespace

QString fromBytes(std::string_view bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return decoder.hasError() ? fromWindows1252(bytes) : text;
}

std::size_t wholeCharacters(std::string_view text, std::size_t most) noexcept {
    constexpr std::size_t longestCharacter = 4;
    if (text.size() <= most) {
        return text.size();
    }
    std::size_t cut = most;
    while (cut > 0 && continuesCharacter(text[cut]) && most - cut < longestCharacter) {
        --cut;
    }
    // No character begins within reach, so the text is not UTF-8.
    return continuesCharacter(text[cut]) ? most : cut;
}

QString startFromBytes(std::string_view bytes, std::size_t most) {
    const std::size_t shown = wholeCharacters(bytes, most);
    const QString start = fromBytes(bytes.substr(0, shown));
    return shown < bytes.size() ? start + QStringLiteral(" [...]") : start;
}

std::string toBytes(const QString& text) {
    return text.toStdString();
}

QString withoutHalfPairs(const QString& text) {
    QString whole = text;
    for (qsizetype at = 0; at < whole.size(); ++at) {
        if (!whole.at(at).isSurrogate()) {
            continue;
        }
        const bool isPair =
            whole.at(at).isHighSurrogate() && at + 1 < whole.size() && whole.at(at + 1).isLowSurrogate();
        if (isPair) {
            ++at;
        } else {
            whole[at] = QChar(QChar::ReplacementCharacter);
        }
    }
    return whole;
}

std::size_t inStr(std::size_t start, std::string_view text, std::string_view wanted) noexcept {
    if (start == 0 || start > text.size()) {
        return 0;
    }
    // The sender of a mail chooses both texts. find() can take time in proportion to the product of their
    // lengths; memmem() never does.
    text.remove_prefix(start - 1);
    const void* const found = ::memmem(text.data(), text.size(), wanted.data(), wanted.size());
    return found == nullptr ? 0
                            : start + static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::string_view mid(std::string_view text, std::int64_t start, std::int64_t length) {
    if (start < 1 || length < 0) {
        throw RuntimeError(errors::InvalidProcedureCall);
    }
    if (std::cmp_greater(start, text.size())) {
        return {};
    }
    return text.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(length));
}

std::string_view trimmed(std::string_view text) noexcept {
    constexpr std::string_view whiteSpace = " \t\r\n";
    const std::size_t start = std::min(text.find_first_not_of(whiteSpace), text.size());
    text.remove_prefix(start);
    return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

QString trimmedSpaces(const QString& text) {
    const QChar space = u' ';
    qsizetype first = 0;
    qsizetype end = text.size();
    while (first < end && text.at(first) == space) {
        ++first;
    }
    while (end > first && text.at(end - 1) == space) {
        --end;
    }
    return text.sliced(first, end - first);
}

QString fitted(const QString& text, int width) {
    const auto isPrintableAscii = [](QChar character) { return character >= u' ' && character <= u'~'; };
    if (std::all_of(text.begin(), text.end(), isPrintableAscii)) {
        // Printable ASCII has no combining marks, so the slow search for character boundaries is not needed.
        return text.leftJustified(width, u' ', true);
    }
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, text);
    int characters = 0;
    while (characters < width && boundary.toNextBoundary() >= 0) {
        ++characters;
    }
    const qsizetype end = characters < width ? text.size() : boundary.position();
    return text.first(end) + QString(width - characters, u' ');
}

QString withControlsVisible(const QString& text) {
    if (std::none_of(text.begin(), text.end(), isControlCharacter)) {
        return text;
    }
    QString shown;
    shown.reserve(text.size());
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code == u'\t' || code == u'\r' || code == u'\n') {
            shown.append(u' ');
        } else if (code < 0x20) {
            shown.append(QChar(static_cast<char16_t>(0x2400 + code))); // the control pictures
        } else if (isInvisibleControl(code)) {
            shown.append(QStringLiteral("<%1>").arg(code, 4, 16, QLatin1Char('0')).toUpper());
        } else {
            shown.append(character);
        }
    }
    return shown;
}

bool isControlCharacter(QChar character) noexcept {
    return character.unicode() < 0x20 || isInvisibleControl(character.unicode());
}

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return upper;
}

std::int16_t toInteger16(const QString& text) {
    if (!isDecimal(text)) {
        throw RuntimeError(errors::TypeMismatch);
    }
    // isDecimal() has accepted the text, so toDouble() gives infinity for a number too large for a double,
    // and 0 for one too small.
    const double rounded = std::nearbyint(text.trimmed().toDouble());
    if (rounded < INT16_MIN || rounded > INT16_MAX) {
        throw RuntimeError(errors::Overflow);
    }
    return static_cast<std::int16_t>(rounded);
}

} // namespace platform
