#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace netcodelib {

/**
 * Turns bytes into base64 text as mail carries it (RFC 2045 section 6.8): lines of 76 characters, each ended
 * by CR LF, the last one too. No bytes give no line. The bytes may come in pieces of any size; memory does
 * not grow with them.
 *
 *     encoder.append(piece, text); ... encoder.finish(text);
 */
class Base64Encoder {
  public:
    static constexpr std::size_t kLineCharacters = 76;
    /** Bytes that one line carries. */
    static constexpr std::size_t kLineBytes = kLineCharacters / 4 * 3;

    /** Adds the lines that these bytes complete to the end of the text. */
    void append(std::string_view bytes, std::string& text);

    /** Adds the last, shorter line. The encoder can then begin anew. */
    void finish(std::string& text);

  private:
    /** Bytes of a line that is not complete yet. */
    std::array<char, kLineBytes> held_{};
    std::size_t heldBytes_ = 0;
};

} // namespace netcodelib
