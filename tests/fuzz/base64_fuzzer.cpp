// Decoding in pieces gives what decoding character by character gives, the only error is the documented one,
// and what was encoded comes back, also as the text of a part.

#include "components/netcodelib/base64_decoder.h"
#include "components/netcodelib/base64_encoder.h"
#include "components/netcodelib/leading_fields.h"
#include "components/netcodelib/part_decoder.h"
#include "platform/runtime_error.h"
#include "tests/fuzz/fuzz_input.h"

#include <string>
#include <string_view>

namespace {

struct Result {
    std::string bytes;
    int error = 0;

    bool operator==(const Result&) const = default;
};

/** Decodes in pieces whose sizes the input decides; of one character each once the input is used up. */
template <class Decoder = netcodelib::Base64Decoder>
Result decoded(std::string_view text, fuzz::Input decisions) {
    Decoder decoder;
    Result result;
    result.error = platform::errorNumberOf([&] {
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, 1 + decisions.below(256));
            decoder.append(piece, result.bytes);
            text.remove_prefix(piece.size());
        }
        decoder.finish(result.bytes);
    });
    return result;
}

std::string encodedInPieces(std::string_view bytes, fuzz::Input decisions) {
    netcodelib::Base64Encoder encoder;
    std::string text;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, 1 + decisions.below(256));
        encoder.append(piece, text);
        bytes.remove_prefix(piece.size());
    }
    encoder.finish(text);
    return text;
}

std::string withoutFields(std::string_view text, std::size_t pieceBytes) {
    netcodelib::LeadingFields fields;
    std::string left;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, pieceBytes);
        left += fields.take(piece);
        text.remove_prefix(piece.size());
    }
    left += fields.takeLast();
    return left;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Input decisions(data, size < 16 ? size : 16);
    const std::string_view text = input.rest();

    const Result slow = decoded(text, fuzz::Input(nullptr, 0));
    const Result fast = decoded(text, decisions);
    fuzz::require(fast.error == slow.error, "the error does not depend on the pieces");
    fuzz::require(fast.error != 0 || fast.bytes == slow.bytes, "the bytes do not depend on the pieces");
    fuzz::require(fast.error == 0 || fast.error == platform::errors::BadEncodedText,
                  "only the documented error is raised");
    fuzz::require(fast.bytes.size() <= text.size() / 4 * 3 + 3, "no more bytes than the text can hold");

    const std::string encoded = encodedInPieces(text, decisions);
    fuzz::require(decoded(encoded, decisions) == Result{std::string(text), 0}, "what was encoded comes back");
    fuzz::require(withoutFields(encoded, size) == encoded, "encoded text is never taken for header lines");

    const std::string part = "\r\n" + encoded + "--\r\n";
    fuzz::require(decoded<netcodelib::PartDecoder>(part, decisions) == Result{std::string(text), 0},
                  "what was encoded comes back from its part");
    const Result slowPart = decoded<netcodelib::PartDecoder>(text, fuzz::Input(nullptr, 0));
    const Result fastPart = decoded<netcodelib::PartDecoder>(text, decisions);
    fuzz::require(fastPart.error == slowPart.error && (fastPart.error != 0 || fastPart == slowPart),
                  "a part's bytes and errors do not depend on the pieces");
    fuzz::require(fastPart.error == 0 || fastPart.error == platform::errors::BadEncodedText,
                  "a part raises only the documented error");

    std::string left;
    if (platform::errorNumberOf([&] { left = withoutFields(text, 1); }) == 0) {
        fuzz::require(left.size() <= text.size() && text.ends_with(left), "what is left is the text's end");
    }
    return 0;
}
