#include "addresses/sendable_address.h"

#include "components/smtplib/address_list.h"
#include "message/mail_mode.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QString>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <vector>

namespace addresses {

namespace {
/** Room for every letter of four bytes, and for marks upon some: nothing longer is looked at. */
constexpr std::size_t kMostNameBytes = 512;

std::vector<smtplib::Address> readAsTyped(std::string_view text) {
    std::vector<smtplib::Address> read;
    const auto characters =
        mailMode() == MailMode::House ? smtplib::AddressCharacters::Ascii : smtplib::AddressCharacters::Any;
    const int error = platform::errorNumberOf([&] { read = smtplib::parseAddressList(text, characters); });
    return error == 0 ? read : std::vector<smtplib::Address>();
}
} // namespace

bool canBeSentTo(std::string_view address) {
    // Between the brackets of a host's address anything may stand.
    if (address.size() > mostAddressBytes ||
        std::ranges::any_of(platform::fromBytes(address), platform::isControlCharacter)) {
        return false;
    }
    const std::vector<smtplib::Address> read = readAsTyped(address);
    if (read.size() != 1) {
        return false;
    }
    // Where the domain becomes A-labels, what was read differs from the text, which must not hide more.
    const std::string& localPart = read.front().localPart;
    const std::string_view domain = address.substr(std::min(address.size(), localPart.size() + 1));
    return address.starts_with(localPart + '@') && domain.find_first_of(" \t,;:<>()\"") == domain.npos;
}

std::string nameForShowing(std::string_view name) {
    QString text = platform::fromBytes(name.substr(0, platform::wholeCharacters(name, kMostNameBytes)));
    std::ranges::replace_if(
        text, [](QChar character) { return character.isSpace(); }, QChar(u' '));
    text.removeIf(platform::isControlCharacter);
    text = text.simplified();
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, text);
    for (int letters = 0; letters < mostNameLetters && boundary.toNextBoundary() >= 0; ++letters) {
    }
    const qsizetype end = boundary.position();
    return platform::toBytes(end < 0 ? text : text.first(end).trimmed());
}

} // namespace addresses
