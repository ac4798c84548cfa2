#include "standard/transfer_decoder.h"

#include "standard/base64_text.h"
#include "standard/header_fields.h"
#include "standard/quoted_printable.h"

#include <algorithm>
#include <array>
#include <gmime/gmime.h>
#include <string>

namespace standard {

namespace {
using Take = std::function<void(std::string_view)>;

/** Bytes that are decoded at once. */
constexpr std::size_t kPieceBytes = 64U << 10U;

/** GMime's decoding of one text. */
class Decoding {
  public:
    Decoding(GMimeContentEncoding encoding, const Take& take) : take_(take) {
        g_mime_encoding_init_decode(&state_, encoding);
    }

    void add(std::string_view text) {
        for (; !text.empty(); text.remove_prefix(std::min(kPieceBytes, text.size()))) {
            const std::string_view piece = text.substr(0, kPieceBytes);
            bytes_.resize(g_mime_encoding_outlen(&state_, piece.size()));
            const std::size_t length =
                g_mime_encoding_step(&state_, piece.data(), piece.size(), bytes_.data());
            take_(std::string_view(bytes_).substr(0, length));
        }
    }

  private:
    const Take& take_;
    GMimeEncoding state_{};
    std::string bytes_;
};

void decodeBase64(std::string_view content, const Take& take) {
    forEachBase64Piece(content, [&take](std::string_view piece) {
        Decoding decoding(GMIME_CONTENT_ENCODING_BASE64, take);
        // GMime counts a padding sign for a digit wherever it stands, and gives the last bytes only behind
        // one: so it gets none but at the end.
        while (!piece.empty()) {
            const std::size_t sign = std::min(piece.find('='), piece.size());
            decoding.add(piece.substr(0, sign));
            piece.remove_prefix(std::min(sign + 1, piece.size()));
        }
        decoding.add("==");
    });
}

/** What stands between the lines that begin and end uuencoded text; all of it where no line begins it. */
std::string_view uuencodedLines(std::string_view content) {
    constexpr std::string_view opening = "begin ";
    const std::size_t found = content.starts_with(opening) ? 0 : content.find("\nbegin ");
    if (found == std::string_view::npos) {
        return content;
    }
    const std::size_t lineEnd = content.find('\n', found + opening.size());
    content.remove_prefix(lineEnd == std::string_view::npos ? content.size() : lineEnd + 1);
    for (const std::string_view closing : {"\nend\r", "\nend\n"}) {
        content = content.substr(0, std::min(content.find(closing), content.size()));
    }
    return content;
}

struct NamedEncoding {
    std::string_view name;
    TransferEncoding encoding;
};

/** In small letters, without hyphens and blanks. */
constexpr std::array<NamedEncoding, 14> kNamedEncodings{{
    {"", TransferEncoding::None},
    {"7bit", TransferEncoding::None},
    {"7bits", TransferEncoding::None},
    {"8bit", TransferEncoding::None},
    {"8bits", TransferEncoding::None},
    {"binary", TransferEncoding::None},
    {"plain", TransferEncoding::None},
    {"base64", TransferEncoding::Base64},
    {"quotedprintable", TransferEncoding::QuotedPrintable},
    {"xuuencode", TransferEncoding::Uuencode},
    {"uuencode", TransferEncoding::Uuencode},
    {"uuencoded", TransferEncoding::Uuencode},
    {"xuue", TransferEncoding::Uuencode},
    {"uue", TransferEncoding::Uuencode},
}};

/** The encoding of that name, however its words are joined: senders write `7-bit` and `quoted printable` too.
 */
TransferEncoding encodingNamed(std::string_view name) {
    std::string letters = lowerCase(name);
    std::erase_if(letters, [](char letter) {
        return std::string_view("-_ \t").find(letter) != std::string_view::npos;
    });
    const auto* const found = std::find_if(kNamedEncodings.begin(), kNamedEncodings.end(),
                                           [&](const NamedEncoding& named) { return named.name == letters; });
    return found == kNamedEncodings.end() ? TransferEncoding::Unknown : found->encoding;
}
} // namespace

TransferEncoding transferEncodingOf(std::string_view field) {
    constexpr std::string_view endsName = ";(,";
    field = trimmed(field);
    if (field.starts_with('"')) {
        field.remove_prefix(1);
        field = field.substr(0, field.find('"'));
    }
    const std::string_view name = trimmed(field.substr(0, field.find_first_of(endsName)));
    const std::string_view firstWord = name.substr(0, name.find_first_of(" \t"));
    // Some write `quoted printable`, some add a word of their own.
    const TransferEncoding encoding = encodingNamed(name);
    return encoding == TransferEncoding::Unknown ? encodingNamed(firstWord) : encoding;
}

bool isDecodable(std::string_view content, TransferEncoding encoding) {
    if (encoding == TransferEncoding::Base64) {
        return isMostlyBase64(content);
    }
    return encoding != TransferEncoding::Unknown;
}

void decode(std::string_view content, TransferEncoding encoding, const Take& take) {
    if (!isDecodable(content, encoding)) {
        encoding = TransferEncoding::None;
    }
    switch (encoding) {
    case TransferEncoding::Base64:
        decodeBase64(content, take);
        break;
    case TransferEncoding::QuotedPrintable:
        decodeQuotedPrintable(content, take);
        break;
    case TransferEncoding::Uuencode:
        Decoding(GMIME_CONTENT_ENCODING_UUENCODE, take).add(uuencodedLines(content));
        break;
    case TransferEncoding::None:
    case TransferEncoding::Unknown:
        take(content);
        break;
    }
}

std::string decoded(std::string_view content, TransferEncoding encoding) {
    std::string bytes;
    decode(content, encoding, [&bytes](std::string_view piece) { bytes.append(piece); });
    return bytes;
}

std::int64_t decodedSize(std::string_view content, TransferEncoding encoding) {
    if (encoding == TransferEncoding::Base64) {
        return bytesOfBase64(content);
    }
    std::int64_t bytes = 0;
    decode(content, encoding,
           [&bytes](std::string_view piece) { bytes += static_cast<std::int64_t>(piece.size()); });
    return bytes;
}

} // namespace standard
