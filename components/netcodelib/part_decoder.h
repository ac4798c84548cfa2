#pragma once

#include "components/netcodelib/base64_decoder.h"
#include "components/netcodelib/base64_form.h"
#include "components/netcodelib/leading_fields.h"

#include <string>
#include <string_view>

namespace netcodelib {

/**
 * Turns the text of a MIME part, whatever is left of its header included, back into the bytes that were
 * encoded: all of them, or it raises error 20502. See LeadingFields for where the encoded text begins, and
 * Base64Form for what is taken for encoded text. Pieces may have any size; memory does not grow with them.
 *
 *     decoder.append(piece, bytes); ... decoder.finish(bytes);
 */
class PartDecoder {
  public:
    /** Adds the bytes that this piece completes. \throws RuntimeError 20502 */
    void append(std::string_view piece, std::string& bytes) { decode(fields_.take(piece), bytes); }

    /**
     * Adds the last bytes. The bytes are the file's only when this has not raised. \throws RuntimeError 20502
     */
    void finish(std::string& bytes) {
        decode(fields_.takeLast(), bytes);
        form_.finish();
        decoder_.finish(bytes);
    }

  private:
    void decode(std::string_view text, std::string& bytes) {
        form_.add(text);
        decoder_.append(text, bytes);
    }

    LeadingFields fields_;
    Base64Form form_;
    Base64Decoder decoder_;
};

} // namespace netcodelib
