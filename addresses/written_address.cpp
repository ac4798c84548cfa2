#include "addresses/written_address.h"

#include "components/smtplib/address_list.h"
#include "components/smtplib/address_tokens.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <vector>

namespace addresses {

namespace {
bool isWordCharacter(char character) {
    constexpr unsigned char firstBeyondAscii = 0x80;
    return character == ' ' || smtplib::isAtomCharacter(character) ||
           static_cast<unsigned char>(character) >= firstBeyondAscii;
}

std::string quoted(std::string_view name) {
    std::string text = "\"";
    for (const char character : name) {
        if (character == '"' || character == '\\') {
            text += '\\';
        }
        text += character;
    }
    return text + '"';
}
} // namespace

std::string writtenAddress(const FoundAddress& found) {
    if (found.name.empty()) {
        return found.address;
    }
    const bool onlyWords = std::ranges::all_of(found.name, isWordCharacter);
    return (onlyWords ? found.name : quoted(found.name)) + " <" + found.address + '>';
}

bool hasAddress(std::string_view typed, std::string_view address) {
    std::vector<smtplib::Address> there;
    const int error = platform::errorNumberOf(
        [&] { there = smtplib::parseAddressList(typed, smtplib::AddressCharacters::Any); });
    return error == 0 && std::ranges::any_of(there, [address](const smtplib::Address& one) {
               return platform::upperCase(one.mailbox()) == platform::upperCase(address);
           });
}

} // namespace addresses
