#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace support {

/** Sizes, in bytes, of the pieces that stream parsers are fed with; the last one takes everything at once.
 */
inline constexpr std::array<std::size_t, 7> kPieceSizes{1, 2, 3, 4, 7, 1000, std::string_view::npos};

/** Calls the action with each piece of the bytes in turn. */
template <class Action>
void forEachPiece(std::string_view bytes, std::size_t pieceBytes, const Action& action) {
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceBytes);
        action(piece);
        bytes.remove_prefix(piece.size());
    }
}

} // namespace support
