#include "components/netcodelib/base64_decoder.h"

#include "components/netcodelib/base64_alphabet.h"
#include "platform/runtime_error.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace netcodelib {

namespace {
constexpr unsigned kBitsPerCharacter = 6;

/**
 * What a character adds to its group, in the order of memory: three bytes, and a mark for a foreign
 * character.
 */
using Entry = std::uint32_t;
using EntryTable = std::array<Entry, 256>;

constexpr Entry kForeign = std::bit_cast<Entry>(std::array<unsigned char, 4>{0, 0, 0, 1});

constexpr std::size_t byte(char character) noexcept {
    return static_cast<unsigned char>(character);
}

/**
 * The entries of all characters in this position (0 to 3) of a group. A group's four entries, or-ed together,
 * make its bytes.
 */
constexpr EntryTable entriesAt(unsigned position) {
    EntryTable entries{};
    entries.fill(kForeign);
    for (std::uint32_t value = 0; value < kAlphabet.size(); ++value) {
        const std::uint32_t bits = value << (kBitsPerCharacter * (3 - position));
        entries[byte(kAlphabet[value])] = std::bit_cast<Entry>(std::array<unsigned char, 4>{
            static_cast<unsigned char>(bits >> 16U & 0xFFU), static_cast<unsigned char>(bits >> 8U & 0xFFU),
            static_cast<unsigned char>(bits & 0xFFU), 0});
    }
    return entries;
}

constexpr EntryTable kFirst = entriesAt(0);
constexpr EntryTable kSecond = entriesAt(1);
constexpr EntryTable kThird = entriesAt(2);
constexpr EntryTable kFourth = entriesAt(3);

constexpr unsigned char kNoValue = 0xFF;

constexpr std::array<unsigned char, 256> kValues = [] {
    std::array<unsigned char, 256> values{};
    values.fill(kNoValue);
    for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
        values[byte(kAlphabet[value])] = static_cast<unsigned char>(value);
    }
    return values;
}();

bool isForeign(char character) noexcept {
    return kValues[byte(character)] == kNoValue && character != kPadding;
}

Entry groupAt(const char* text) noexcept {
    return kFirst[byte(text[0])] | kSecond[byte(text[1])] | kThird[byte(text[2])] | kFourth[byte(text[3])];
}

/**
 * Decodes whole groups up to the first with a character outside the alphabet, and moves `text` and `out` past
 * them. It writes one byte more than it decodes.
 */
void decodeGroups(std::string_view& text, char*& out) noexcept {
    const char* from = text.data();
    const char* const end = from + text.size();
    char* to = out;
    while (static_cast<std::size_t>(end - from) >= 2 * kGroupCharacters) {
        const Entry first = groupAt(from);
        const Entry second = groupAt(from + kGroupCharacters);
        if (((first | second) & kForeign) != 0) {
            break;
        }
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + kGroupBytes, &second, sizeof second);
        from += 2 * kGroupCharacters;
        to += 2 * kGroupBytes;
    }
    if (static_cast<std::size_t>(end - from) >= kGroupCharacters) {
        const Entry group = groupAt(from);
        if ((group & kForeign) == 0) {
            std::memcpy(to, &group, sizeof group);
            from += kGroupCharacters;
            to += kGroupBytes;
        }
    }
    text.remove_prefix(static_cast<std::size_t>(from - text.data()));
    out = to;
}

/** Drops the foreign characters at the front; false when there are none. */
bool dropForeign(std::string_view& text) noexcept {
    std::size_t foreign = 0;
    while (foreign < text.size() && isForeign(text[foreign])) {
        ++foreign;
    }
    text.remove_prefix(foreign);
    return foreign > 0;
}
} // namespace

void Base64Decoder::append(std::string_view text, std::string& bytes) {
    const std::size_t before = bytes.size();
    // Room for the group that an earlier piece began, and for the extra byte that decodeGroups() writes.
    bytes.resize(before + (text.size() / kGroupCharacters + 1) * kGroupBytes + 1);
    char* out = bytes.data() + before;
    while (!text.empty() && !ended_) {
        if (characters_ == 0) {
            decodeGroups(text, out);
            if (dropForeign(text) || text.empty()) {
                continue;
            }
        }
        out = take(text.front(), out);
        text.remove_prefix(1);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    raiseIfCut();
}

void Base64Decoder::finish(std::string& bytes) {
    std::array<char, kGroupBytes> rest{};
    bytes.append(rest.data(), endData(rest.data()));
    raiseIfCut();
    ended_ = false;
}

void Base64Decoder::raiseIfCut() {
    if (cut_) {
        *this = Base64Decoder();
        throw platform::RuntimeError(platform::errors::BadEncodedText);
    }
}

/** The slow way, one character at a time, for groups with foreign characters inside and for the last one. */
char* Base64Decoder::take(char character, char* out) {
    if (character == kPadding) {
        return endData(out);
    }
    const unsigned char value = kValues[byte(character)];
    if (value == kNoValue) {
        return out;
    }
    bits_ = bits_ << kBitsPerCharacter | value;
    if (++characters_ == static_cast<int>(kGroupCharacters)) {
        *out++ = static_cast<char>(bits_ >> 16U & 0xFFU);
        *out++ = static_cast<char>(bits_ >> 8U & 0xFFU);
        *out++ = static_cast<char>(bits_ & 0xFFU);
        bits_ = 0;
        characters_ = 0;
    }
    return out;
}

/** Writes the bytes that the last, shorter group holds. */
char* Base64Decoder::endData(char* out) {
    const std::uint32_t bits = bits_;
    const int characters = characters_;
    bits_ = 0;
    characters_ = 0;
    ended_ = true;
    switch (characters) {
    case 1: // 6 bits
        cut_ = true;
        break;
    case 2: // 12 bits
        *out++ = static_cast<char>(bits >> 4U & 0xFFU);
        break;
    case 3: // 18 bits
        *out++ = static_cast<char>(bits >> 10U & 0xFFU);
        *out++ = static_cast<char>(bits >> 2U & 0xFFU);
        break;
    default:
        break;
    }
    return out;
}

} // namespace netcodelib
