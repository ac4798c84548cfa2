#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace standard {

/** Hands over the pieces of a content that are base64; each ends with its padding, or with the content. */
void forEachBase64Piece(std::string_view content, const std::function<void(std::string_view)>& take);

/** The number of bytes that a piece stands for. */
std::int64_t bytesOfPiece(std::string_view piece);

/** Whether at least half of the content is base64; see isDecodable(). */
bool isMostlyBase64(std::string_view content);

} // namespace standard
