#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace netcodelib {

/**
 * Turns base64 text back into bytes, as tolerantly as mail needs it. The text may come in pieces of any size;
 * memory does not grow with it. Base64Form decides whether a text is base64, and complete.
 *
 * - Line ends, spaces and any other foreign character are ignored, wherever they stand (RFC 2045 section
 *   6.8). So is the "--" that begins the next boundary.
 * - Padding ends the data, and nothing after it is looked at. RFC 2045 takes "=" as evidence of the end, and
 *   the footer that a mailing list adds consists mostly of characters of the alphabet. The price: when
 *   several texts are padded one by one and then joined, only the first is decoded.
 * - At the end of the text padding may be missing, in whole or in part. Bits that padding leaves over are
 *   dropped, whatever their value.
 * - A character that is left over alone, before padding or at the end, holds less than a byte: the text has
 *   been cut. A text cut between two groups of four cannot be told from a whole one.
 *
 *     decoder.append(piece, bytes); ... decoder.finish(bytes);
 */
class Base64Decoder {
  public:
    /**
     * Adds the bytes that this piece completes.
     * \throws RuntimeError 20502 for a text that stops in the middle of a byte; the decoder can then begin
     * anew.
     */
    void append(std::string_view text, std::string& bytes);

    /** Adds the last bytes. The decoder can then begin anew. \throws RuntimeError 20502 as append(). */
    void finish(std::string& bytes);

  private:
    char* take(char character, char* out);
    char* endData(char* out);
    void raiseIfCut();

    /** The bits of the characters since the last whole group, and the number of these characters: 0 to 3. */
    std::uint32_t bits_ = 0;
    int characters_ = 0;
    bool ended_ = false;
    bool cut_ = false;
};

} // namespace netcodelib
