#pragma once

#include "message/standard_reader.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace standard {

/** The encoding that a Content-Transfer-Encoding field names (RFC 2045 section 6.1); None for no field. */
TransferEncoding transferEncodingOf(std::string_view field);

/**
 * Whether the content is what its encoding says. Of base64 at least half must be base64; words between blanks
 * are so only when they could be whole groups, since words of a language have the same letters.
 */
bool isDecodable(std::string_view content, TransferEncoding encoding);

/**
 * Hands over the decoded bytes in pieces. Characters that base64 does not have are passed over (RFC 2045
 * section 6.8), and so is text behind its end, unless it is base64 again. What cannot be decoded is handed
 * over as it stands.
 */
void decode(std::string_view content, TransferEncoding encoding,
            const std::function<void(std::string_view)>& take);

/** The same as one text. */
std::string decoded(std::string_view content, TransferEncoding encoding);

/** The number of bytes that decode() hands over. */
std::int64_t decodedSize(std::string_view content, TransferEncoding encoding);

} // namespace standard
