#include "components/poplib/listing_allowance.h"

#include "platform/text.h"

#include <algorithm>

namespace poplib {

namespace {
/** Bytes that keeping a line costs in addition to its text. */
constexpr std::size_t kBytesBesideTheText = 4;

bool mayHoldParameters(const HeaderLine& line) {
    return line.field.empty() || platform::upperCase(line.field) == "CONTENT-TYPE";
}

/**
 * Removes the parameter that the cut has gone through: half a quoted string would look like the sender's
 * mistake.
 */
void removeLastParameter(HeaderLine& line) {
    const std::size_t semicolon = line.value.rfind(';');
    line.value.resize(semicolon == std::string::npos ? 0 : semicolon);
}
} // namespace

bool ListingAllowance::cut(HeaderLine& line) {
    const std::size_t whole = line.field.size() + line.value.size() + kBytesBesideTheText;
    const std::size_t own = std::min({whole, kHeaderLineBytes, ownHeaderBytes_});
    const std::size_t shared = std::min(whole - own, sharedHeaderBytes_);
    const std::size_t bytesBesideTheValue = line.field.size() + kBytesBesideTheText;
    if (own + shared < bytesBesideTheValue) {
        return false;
    }
    ownHeaderBytes_ -= own;
    sharedHeaderBytes_ -= shared;
    if (own + shared < whole) {
        line.value.resize(own + shared - bytesBesideTheValue);
        line.cut = true;
    }
    if (line.cut && mayHoldParameters(line)) {
        removeLastParameter(line);
    }
    return true;
}

bool ListingAllowance::cut(BodyLine& line) {
    if (bodyBytes_ < kBytesBesideTheText) {
        return false;
    }
    const std::size_t bytes = std::min(line.text.size() + kBytesBesideTheText, bodyBytes_);
    bodyBytes_ -= bytes;
    line.text.resize(bytes - kBytesBesideTheText);
    return true;
}

} // namespace poplib
