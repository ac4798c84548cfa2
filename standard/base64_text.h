#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace standard {

/** Hands over the pieces of a content that are base64; each ends with its padding, or with the content. */
void forEachBase64Piece(std::string_view content, const std::function<void(std::string_view)>& take);

/** Whether at least half of the content is base64; see isDecodable(). */
bool isMostlyBase64(std::string_view content);

/** The number of bytes that the pieces stand for; that of the content itself when it is not mostly base64. */
std::int64_t bytesOfBase64(std::string_view content);

} // namespace standard
