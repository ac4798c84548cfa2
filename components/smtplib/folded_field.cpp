#include "components/smtplib/folded_field.h"

#include "components/smtplib/address_tokens.h"
#include "platform/text.h"

#include <QByteArray>
#include <QString>

#include <algorithm>

namespace smtplib {

namespace {
constexpr std::string_view kSpaces = " \t";

/** UTF-8 bytes in one encoded word. In base64 they make a word that fits behind any field's name. */
constexpr std::size_t kBytesOfEncodedWord = 39;

/**
 * Longest unit that is not encoded, in characters: behind the field's name it still fits on a line (RFC 5322
 * section 2.1.1).
 */
constexpr std::size_t kMaximumUnitCharacters = 900;

/** Longest name in quotes; a longer one would have to be folded inside them. */
constexpr std::size_t kMaximumQuotedCharacters = 70;

bool isPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        return (character >= ' ' && character <= '~') || character == '\t';
    });
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/** Returns the text as units that each hold one encoded word, never with a part of a character. */
std::vector<std::string> encodedWords(std::string_view text) {
    // Text that is not UTF-8 is converted as it is for showing, so that the encoded word's charset is true.
    const std::string valid = platform::toBytes(platform::fromBytes(text));
    std::vector<std::string> words;
    for (std::size_t start = 0; start < valid.size();) {
        std::size_t end = std::min(start + kBytesOfEncodedWord, valid.size());
        while (end < valid.size() && continuesCharacter(valid[end])) {
            --end;
        }
        const QByteArray bytes(valid.data() + start, static_cast<qsizetype>(end - start));
        words.push_back(" =?UTF-8?B?" + bytes.toBase64().toStdString() + "?=");
        start = end;
    }
    return words;
}

/**
 * Cuts before each run of spaces. Spaces at the end stay with the last word, as no line may hold only spaces.
 */
std::vector<std::string> wordsWithSpacesBefore(std::string_view text) {
    std::vector<std::string> units;
    while (!text.empty()) {
        const std::size_t word = std::min(text.find_first_not_of(kSpaces), text.size());
        std::size_t end = std::min(text.find_first_of(kSpaces, word), text.size());
        if (text.find_first_not_of(kSpaces, end) == std::string_view::npos) {
            end = text.size();
        }
        units.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return units;
}

bool anyTooLong(const std::vector<std::string>& units) {
    return std::any_of(units.begin(), units.end(),
                       [](const std::string& unit) { return unit.size() > kMaximumUnitCharacters; });
}

std::string quotedText(std::string_view text) {
    std::string quoted = " \"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + '"';
}
} // namespace

FoldedField::FoldedField(std::string_view nameAndColon) : text_(nameAndColon) {}

void FoldedField::makeRoomFor(std::size_t characters) {
    if (!onlyName_ && text_.size() - lineStart_ + characters > kPreferredLineCharacters) {
        text_ += "\r\n";
        lineStart_ = text_.size();
    }
    onlyName_ = false;
}

void FoldedField::add(std::string_view unit) {
    makeRoomFor(unit.size());
    text_ += unit;
}

void FoldedField::addTogether(const std::vector<std::string>& units) {
    std::size_t characters = 0;
    for (const std::string& unit : units) {
        characters += unit.size();
    }
    if (characters > kPreferredLineCharacters) {
        for (const std::string& unit : units) {
            add(unit);
        }
        return;
    }
    makeRoomFor(characters);
    for (const std::string& unit : units) {
        text_ += unit;
    }
}

std::vector<std::string> unitsOfText(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    std::vector<std::string> units = wordsWithSpacesBefore(' ' + std::string(text));
    return isPlain(text) && !anyTooLong(units) ? units : encodedWords(text);
}

std::vector<std::string> unitsOfName(std::string_view name, bool quoted) {
    if (name.empty()) {
        return {};
    }
    if (!isPlain(name)) {
        return encodedWords(name);
    }
    const bool atoms = std::all_of(name.begin(), name.end(), [](char character) {
        return isAtomCharacter(character) || character == ' ';
    });
    if (atoms && !quoted) {
        std::vector<std::string> units = wordsWithSpacesBefore(' ' + std::string(name));
        return anyTooLong(units) ? encodedWords(name) : units;
    }
    const std::string unit = quotedText(name);
    return unit.size() > kMaximumQuotedCharacters ? encodedWords(name) : std::vector<std::string>{unit};
}

} // namespace smtplib
