#include "components/poplib/listing_allowance.h"

#include "platform/text.h"

#include <algorithm>

namespace POPLib {

namespace {
/** What keeping a line takes beside its text. */
constexpr std::size_t kOctetsBesideTheText = 4;

bool mayHoldParameters(const HeaderLine& line) {
    return line.field.empty() || platform::upperCase(line.field) == "CONTENT-TYPE";
}

/**
 * Takes away the parameter that the cut has gone through: half a quoted text would look like a mistake of the
 * sender's.
 */
void removeLastParameter(HeaderLine& line) {
    const std::size_t semicolon = line.value.rfind(';');
    line.value.resize(semicolon == std::string::npos ? 0 : semicolon);
}
} // namespace

bool ListingAllowance::cut(HeaderLine& line) {
    const std::size_t whole = line.field.size() + line.value.size() + kOctetsBesideTheText;
    const std::size_t own = std::min({whole, kHeaderLineOctets, ownHeaderOctets_});
    const std::size_t shared = std::min(whole - own, sharedHeaderOctets_);
    const std::size_t octetsBesideTheValue = line.field.size() + kOctetsBesideTheText;
    if (own + shared < octetsBesideTheValue) {
        return false;
    }
    ownHeaderOctets_ -= own;
    sharedHeaderOctets_ -= shared;
    if (own + shared < whole) {
        line.value.resize(own + shared - octetsBesideTheValue);
        line.cut = true;
    }
    if (line.cut && mayHoldParameters(line)) {
        removeLastParameter(line);
    }
    return true;
}

bool ListingAllowance::cut(BodyLine& line) {
    if (bodyOctets_ < kOctetsBesideTheText) {
        return false;
    }
    const std::size_t octets = std::min(line.text.size() + kOctetsBesideTheText, bodyOctets_);
    bodyOctets_ -= octets;
    line.text.resize(octets - kOctetsBesideTheText);
    return true;
}

} // namespace POPLib
