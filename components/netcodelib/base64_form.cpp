#include "components/netcodelib/base64_form.h"

#include "components/netcodelib/base64_alphabet.h"
#include "platform/runtime_error.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace netcodelib {

namespace {
constexpr std::size_t kBoundaryHyphens = 2;

constexpr std::array<bool, 256> kIsLetter = [] {
    std::array<bool, 256> letters{};
    for (const char letter : kAlphabet) {
        letters[static_cast<unsigned char>(letter)] = true;
    }
    return letters;
}();

bool isLetter(char character) noexcept {
    return kIsLetter[static_cast<unsigned char>(character)];
}

/** Eight ASCII characters. The highest bit of each is free for an answer. */
using Eight = std::uint64_t;

constexpr Eight eightTimes(unsigned value) noexcept {
    return 0x0101010101010101U * value;
}

/**
 * Sets the highest bit of each character from `first` to `last`; the other bits mean nothing. All characters
 * must be below 0x80, so that no addition carries into the next one.
 */
constexpr Eight between(char first, char last, Eight characters) noexcept {
    const Eight fromFirst = characters + eightTimes(0x80U - static_cast<unsigned char>(first));
    const Eight behindLast = characters + eightTimes(0x7FU - static_cast<unsigned char>(last));
    return fromFirst & ~behindLast;
}

bool areEightLetters(const char* text) noexcept {
    constexpr Eight answers = eightTimes(0x80U);
    constexpr Eight smallLetter = eightTimes(0x20U);
    Eight characters = 0;
    std::memcpy(&characters, text, sizeof characters);
    if ((characters & answers) != 0) {
        return false;
    }
    // In ASCII the slash stands right before the digits, so one range covers both.
    const Eight letters = between('a', 'z', characters | smallLetter) | between('/', '9', characters) |
                          between('+', '+', characters);
    return (letters & answers) == answers;
}

std::size_t lettersAtFront(std::string_view text) noexcept {
    std::size_t letters = 0;
    // Nearly all of a text is letters, so eight are checked at once.
    while (text.size() - letters >= sizeof(Eight) && areEightLetters(text.data() + letters)) {
        letters += sizeof(Eight);
    }
    while (letters < text.size() && isLetter(text[letters])) {
        ++letters;
    }
    return letters;
}

void require(bool condition) {
    if (!condition) {
        throw platform::RuntimeError(platform::errors::BadEncodedText);
    }
}
} // namespace

void Base64Form::add(std::string_view text) {
    while (!text.empty() && !passed_) {
        const std::size_t letters = lettersAtFront(text);
        if (letters > 0) {
            endWhiteSpace();
            // Letters behind padding cannot be decoded, so they count as foreign.
            (line_.padding == 0 ? line_.letters : line_.foreign) += letters;
            line_.lastHyphens = 0;
            text.remove_prefix(letters);
        }
        if (!text.empty()) {
            take(text.front());
            text.remove_prefix(1);
        }
    }
}

void Base64Form::take(char character) {
    if (character == '\n') {
        endLine();
    } else if (character == ' ' || character == '\t' || character == '\r') {
        line_.whiteSpaceLast = !line_.isEmpty();
    } else if (character == kPadding) {
        endWhiteSpace();
        ++line_.padding;
        line_.lastHyphens = 0;
    } else {
        endWhiteSpace();
        ++line_.foreign;
        line_.lastHyphens = character == '-' ? line_.lastHyphens + 1 : 0;
    }
}

/** Counts white space as foreign when the line goes on behind it. */
void Base64Form::endWhiteSpace() noexcept {
    if (std::exchange(line_.whiteSpaceLast, false)) {
        ++line_.foreign;
        line_.lastHyphens = 0;
    }
}

void Base64Form::endLine() {
    Line line = std::exchange(line_, {});
    const bool firstLine = !std::exchange(lineEndSeen_, true);
    if (line.isEmpty() || passed_) {
        return;
    }
    const bool withoutText = line.letters + line.padding == 0;
    if (padding_ > 0 && withoutText) {
        passed_ = true;
        return;
    }
    require(!boundarySeen_);
    if (line.lastHyphens == kBoundaryHyphens) {
        boundarySeen_ = true;
        line.foreign -= kBoundaryHyphens;
        if (line.isEmpty()) {
            require(!firstLine);
            return;
        }
    }
    addToData(line);
}

void Base64Form::addToData(const Line& line) {
    // Padding may be broken over lines, but no letters may follow it.
    require(padding_ == 0 || line.letters == 0);
    if (lastLine_ == 0) {
        firstLine_ = line.letters + line.padding;
    } else {
        linesAreGroups_ = linesAreGroups_ && lastLine_ % kGroupCharacters == 0;
        linesAreAlike_ = linesAreAlike_ && lastLine_ == firstLine_ && firstLine_ >= kLeastLineLetters;
        require(linesAreGroups_ || linesAreAlike_);
    }
    lastLine_ = line.letters + line.padding;
    letters_ += line.letters;
    padding_ += line.padding;
    if (line.foreign > 0) {
        require(line.padding == 0 && line.letters == firstLine_ && firstLine_ >= kLeastLineLetters);
        ++disturbedLines_;
    } else if (line.letters == firstLine_) {
        ++cleanLines_;
    }
}

void Base64Form::finish() {
    endLine();
    require((letters_ + padding_) % kGroupCharacters == 0 && letters_ % kGroupCharacters != 1);
    require(disturbedLines_ == 0 || disturbedLines_ < cleanLines_);
}

} // namespace netcodelib
