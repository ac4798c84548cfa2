#include "components/netcodelib/base64_encoder.h"

#include "components/netcodelib/base64_alphabet.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace netcodelib {

namespace {
constexpr std::size_t kTextLineBytes = Base64Encoder::kLineCharacters + 2;

/**
 * The two characters for every value of 12 bits, in the order of memory. 8 KiB fit in a processor's first
 * cache.
 */
constexpr std::array<std::uint16_t, 4096> kPairs = [] {
    std::array<std::uint16_t, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
        pairs[bits] = std::bit_cast<std::uint16_t>(std::array{kAlphabet[bits >> 6U], kAlphabet[bits & 63U]});
    }
    return pairs;
}();

std::uint32_t byteAt(const char* byte) noexcept {
    return static_cast<unsigned char>(*byte);
}

/** Eight bytes as one number, the first byte highest. */
std::uint64_t eightBytes(const char* bytes) noexcept {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) {
        bits = bits << 8U | byteAt(bytes + i);
    }
    return bits;
}

/** Encodes whole groups of three bytes; returns the end of what it wrote. */
inline char* encodeGroups(const char* bytes, std::size_t groups, char* text) noexcept {
    // Eight bytes are read at once, and the first six are two groups. The last two belong to the next group,
    // so one must follow.
    for (; groups > 2; groups -= 2) {
        const std::uint64_t bits = eightBytes(bytes);
        const std::array<std::uint16_t, 4> pairs = {kPairs[bits >> 52U], kPairs[bits >> 40U & 0xFFFU],
                                                    kPairs[bits >> 28U & 0xFFFU],
                                                    kPairs[bits >> 16U & 0xFFFU]};
        std::memcpy(text, pairs.data(), sizeof pairs);
        bytes += 2 * kGroupBytes;
        text += 2 * kGroupCharacters;
    }
    for (; groups > 0; --groups) {
        const std::uint32_t bits = byteAt(bytes) << 16U | byteAt(bytes + 1) << 8U | byteAt(bytes + 2);
        std::memcpy(text, &kPairs[bits >> 12U], 2);
        std::memcpy(text + 2, &kPairs[bits & 0xFFFU], 2);
        bytes += kGroupBytes;
        text += kGroupCharacters;
    }
    return text;
}

char* endLine(char* text) noexcept {
    *text++ = '\r';
    *text++ = '\n';
    return text;
}

char* encodeLine(const char* bytes, char* text) noexcept {
    return endLine(encodeGroups(bytes, Base64Encoder::kLineBytes / kGroupBytes, text));
}
} // namespace

void Base64Encoder::append(std::string_view bytes, std::string& text) {
    const std::size_t before = text.size();
    const std::size_t lines = (heldBytes_ + bytes.size()) / kLineBytes;
    text.resize(before + lines * kTextLineBytes);
    char* out = text.data() + before;
    if (heldBytes_ > 0) {
        const std::size_t taken = bytes.copy(held_.data() + heldBytes_, kLineBytes - heldBytes_);
        heldBytes_ += taken;
        bytes.remove_prefix(taken);
        if (heldBytes_ < kLineBytes) {
            return;
        }
        out = encodeLine(held_.data(), out);
        heldBytes_ = 0;
    }
    while (bytes.size() >= kLineBytes) {
        out = encodeLine(bytes.data(), out);
        bytes.remove_prefix(kLineBytes);
    }
    heldBytes_ = bytes.copy(held_.data(), bytes.size());
}

void Base64Encoder::finish(std::string& text) {
    if (heldBytes_ == 0) {
        return;
    }
    std::array<char, kTextLineBytes> line{};
    const std::size_t rest = heldBytes_ % kGroupBytes;
    char* out = encodeGroups(held_.data(), heldBytes_ / kGroupBytes, line.data());
    if (rest > 0) {
        std::array<char, kGroupBytes> group{};
        std::copy_n(held_.data() + heldBytes_ - rest, rest, group.data());
        out = encodeGroups(group.data(), 1, out);
        std::fill(out - (kGroupBytes - rest), out, kPadding);
    }
    text.append(line.data(), endLine(out));
    heldBytes_ = 0;
}

} // namespace netcodelib
