// Compares the handling of a whole message, from the server's bytes to the saved attachment, with the same
// rules in a parser that remembers nothing. However network and disk cut the bytes, the outcome is the same.
//
// Input: a raw message.

#include "platform/runtime_error.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/opened_message.h"
#include "tests/support/pieces.h"
#include "tests/support/reference_parser.h"

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

namespace {

void requireSame(const support::OpenedMessage& left, const support::OpenedMessage& right, const char* what) {
    const std::string difference = support::differenceBetween(left, right);
    if (!difference.empty()) {
        std::fprintf(stderr, "differs in: %s\n", difference.c_str());
    }
    fuzz::require(difference.empty(), what);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view message = fuzz::Input(data, size).rest();
    const support::OpenedMessage whole = support::opened(message, std::string_view::npos);
    fuzz::require(whole.error == 0 || whole.error == platform::errors::InvalidProcedureCall,
                  "opening raises only the documented error");
    for (const support::DecodedAttachment& attachment : whole.attachments) {
        fuzz::require(attachment.error == 0 || attachment.error == platform::errors::BadEncodedText,
                      "saving raises only the documented error");
        for (const std::size_t pieceBytes : std::initializer_list<std::size_t>{1, 2, 3, 7}) {
            fuzz::require(support::decoded(attachment, pieceBytes) == attachment,
                          "pieces change no attachment");
        }
    }
    requireSame(whole, support::reference::opened(message), "the plain rules say the same");
    const std::size_t pieceBytes = support::kPieceSizes.at(size % support::kPieceSizes.size());
    requireSame(whole, support::opened(message, pieceBytes), "pieces change nothing");
    return 0;
}
