#include "components/poplib/apop.h"

#include <QByteArrayView>
#include <QCryptographicHash>

#include <algorithm>

namespace poplib {

namespace {
bool isVisible(char c) {
    return c >= '!' && c <= '~';
}

/** The letters of an atom (RFC 5322 section 3.2.3). */
bool isAtomLetter(char c) {
    constexpr std::string_view specials = "()<>[]:;@\\,.\"";
    return isVisible(c) && specials.find(c) == std::string_view::npos;
}

/** Atoms with one dot between each two. */
bool isDotAtom(std::string_view text) {
    const bool dotsAreBetween = !text.empty() && text.front() != '.' && text.back() != '.' &&
                                text.find("..") == std::string_view::npos;
    return dotsAreBetween &&
           std::all_of(text.begin(), text.end(), [](char c) { return c == '.' || isAtomLetter(c); });
}

/** A literal in brackets, such as an address. */
bool isLiteral(std::string_view text) {
    if (text.size() < 2 || text.front() != '[' || text.back() != ']') {
        return false;
    }
    text = text.substr(1, text.size() - 2);
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return isVisible(c) && c != '[' && c != ']' && c != '\\'; });
}

/** Whether the text between the angle brackets is that of a message-id. */
bool isMessageId(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos) {
        return false;
    }
    const std::string_view right = text.substr(at + 1);
    return isDotAtom(text.substr(0, at)) && (isDotAtom(right) || isLiteral(right));
}
} // namespace

std::optional<std::string_view> apopTimestamp(std::string_view greetingText) {
    while (true) {
        const std::size_t close = greetingText.find('>');
        if (close == std::string_view::npos) {
            return std::nullopt;
        }
        const std::size_t open = greetingText.substr(0, close).rfind('<');
        if (open != std::string_view::npos && isMessageId(greetingText.substr(open + 1, close - open - 1))) {
            return greetingText.substr(open, close - open + 1);
        }
        greetingText.remove_prefix(close + 1);
    }
}

std::string apopDigest(std::string_view timestamp, std::string_view password) {
    QCryptographicHash hash(QCryptographicHash::Md5);
    hash.addData(QByteArrayView(timestamp.data(), static_cast<qsizetype>(timestamp.size())));
    hash.addData(QByteArrayView(password.data(), static_cast<qsizetype>(password.size())));
    return hash.result().toHex().toStdString();
}

} // namespace poplib
