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

std::string inQuotes(std::string_view name) {
    std::string text = "\"";
    for (const char character : name) {
        if (character == '"' || character == '\\') {
            text += '\\';
        }
        text += character;
    }
    return text + '"';
}

/** In upper case, as they go over the wire; none when the text is no list of addresses. */
std::vector<std::string> mailboxesOf(std::string_view typed) {
    std::vector<smtplib::Address> read;
    const int error = platform::errorNumberOf(
        [&] { read = smtplib::parseAddressList(typed, smtplib::AddressCharacters::Any); });
    std::vector<std::string> mailboxes;
    for (const smtplib::Address& address : error == 0 ? read : std::vector<smtplib::Address>()) {
        mailboxes.push_back(platform::upperCase(address.mailbox()));
    }
    return mailboxes;
}
} // namespace

std::string writtenAddress(const FoundAddress& found) {
    if (found.name.empty()) {
        return found.address;
    }
    const bool onlyWords = std::ranges::all_of(found.name, isWordCharacter);
    return (onlyWords ? found.name : inQuotes(found.name)) + " <" + found.address + '>';
}

bool hasAddress(std::string_view typed, std::string_view address) {
    const std::vector<std::string> there = mailboxesOf(typed);
    const std::vector<std::string> wanted = mailboxesOf(address);
    return !wanted.empty() && std::ranges::find(there, wanted.front()) != there.end();
}

} // namespace addresses
