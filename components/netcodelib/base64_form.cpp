#include "components/netcodelib/base64_form.h"

#include "components/netcodelib/base64_alphabet.h"
#include "platform/runtime_error.h"

#include <array>
#include <utility>

namespace NetCodeLib {

namespace {
constexpr std::size_t kGroupCharacters = 4;
constexpr std::size_t kBoundaryHyphens = 2;

/** 0 for the letters of the alphabet, 1 for everything else. */
constexpr std::array<unsigned char, 256> kOther = [] {
    std::array<unsigned char, 256> other{};
    other.fill(1);
    for (const char letter : kAlphabet) {
        other[static_cast<unsigned char>(letter)] = 0;
    }
    return other;
}();

unsigned isOther(char character) noexcept {
    return kOther[static_cast<unsigned char>(character)];
}

std::size_t lettersAtFront(std::string_view text) noexcept {
    constexpr std::size_t atOnce = 8;
    std::size_t letters = 0;
    // Nearly all of a text is letters: one decision for several of them.
    while (text.size() - letters >= atOnce) {
        const char* const next = text.data() + letters;
        unsigned other = 0;
        for (std::size_t index = 0; index < atOnce; ++index) {
            other |= isOther(next[index]);
        }
        if (other != 0) {
            break;
        }
        letters += atOnce;
    }
    while (letters < text.size() && isOther(text[letters]) == 0) {
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
            // Letters behind padding belong to nothing that could be decoded.
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

/** White space in the middle of a line is as foreign as anything else. */
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
    // Padding may be broken over lines like any other text.
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

} // namespace NetCodeLib
