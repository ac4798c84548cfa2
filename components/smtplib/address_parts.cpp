#include "components/smtplib/address_parts.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QList>
#include <QUrl>

#include <algorithm>
#include <string_view>

namespace smtplib {

namespace {
using Kind = AddressToken::Kind;
namespace errors = platform::errors;

/** Letters, digits, hyphens; and underscores, which real host names have. */
bool isDomainLabel(std::string_view label) {
    constexpr std::size_t maximumBytes = 63;
    return !label.empty() && label.size() <= maximumBytes && label.front() != '-' && label.back() != '-' &&
           std::all_of(label.begin(), label.end(), [](char character) {
               return character == '-' || character == '_' || isLetterOrDigit(character);
           });
}

bool isDomainName(std::string_view name) {
    for (;;) {
        const std::size_t dot = name.find('.');
        if (!isDomainLabel(name.substr(0, dot))) {
            return false;
        }
        if (dot == std::string_view::npos) {
            return true;
        }
        name.remove_prefix(dot + 1);
    }
}

bool hasBeyondAscii(std::string_view text) {
    return std::any_of(text.begin(), text.end(), isBeyondAscii);
}

/** UTF-8 of characters that two people would read alike: none that is invisible, or missing from Unicode. */
bool isVisible(std::string_view text) {
    const QString characters = platform::fromBytes(text);
    const QList<uint> codes = characters.toUcs4();
    return platform::toBytes(characters) == text && std::all_of(codes.begin(), codes.end(), [](uint code) {
               return QChar::isPrint(code) && (!QChar::isSpace(code) || code == u' ') &&
                      code != QChar::ReplacementCharacter;
           });
}

/** A text that stands for the word where only the syntax matters: a letter for each byte beyond ASCII. */
std::string asciiShape(std::string text) {
    std::replace_if(text.begin(), text.end(), isBeyondAscii, 'x');
    return text;
}

void mustBeAllowed(std::string_view localPart, AddressCharacters allowed) {
    if (!hasBeyondAscii(localPart)) {
        return;
    }
    if (allowed == AddressCharacters::Ascii || !isVisible(localPart)) {
        refuseAddress();
    }
    if (allowed == AddressCharacters::AnyInDomain) {
        throw platform::RuntimeError(errors::AddressBeyondAscii);
    }
}

/** The domain in A-labels (RFC 5891 section 4); empty when there are none for it. */
std::string withALabels(std::string_view domain) {
    return QUrl::toAce(platform::fromBytes(domain)).toStdString();
}
} // namespace

std::string localPartOnWire(const AddressToken& token, AddressCharacters allowed) {
    mustBeAllowed(token.text, allowed);
    const std::string shape = asciiShape(token.text);
    if (isDotAtom(shape)) {
        return token.text;
    }
    const bool printable = std::all_of(shape.begin(), shape.end(),
                                       [](char character) { return character >= ' ' && character <= '~'; });
    if (token.kind != Kind::Quoted || token.text.empty() || !printable) {
        refuseAddress();
    }
    std::string quoted = "\"";
    for (const char character : token.text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + '"';
}

std::string domainOnWire(const AddressToken& token, AddressCharacters allowed) {
    if (token.kind == Kind::Literal && token.text != "[]") {
        return token.text;
    }
    const bool inUnicode = allowed != AddressCharacters::Ascii && hasBeyondAscii(token.text);
    if (inUnicode && !isVisible(token.text)) {
        refuseAddress();
    }
    std::string name = inUnicode ? withALabels(token.text) : token.text;
    if (token.kind != Kind::Word || !isDomainName(name)) {
        refuseAddress();
    }
    return name;
}

} // namespace smtplib
