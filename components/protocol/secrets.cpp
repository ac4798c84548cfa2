#include "components/protocol/secrets.h"

#include <QByteArray>

#include <algorithm>

namespace protocol {

namespace {
/** Marks all bytes of the text that belong to the secret, wherever it stands. */
void mark(std::string_view text, std::string_view secret, std::vector<bool>& covered) {
    for (std::size_t at = text.find(secret); at != std::string_view::npos; at = text.find(secret, at + 1)) {
        const auto begin = covered.begin() + static_cast<std::ptrdiff_t>(at);
        std::fill(begin, begin + static_cast<std::ptrdiff_t>(secret.size()), true);
    }
}

constexpr std::size_t kByteBits = 8;
constexpr std::size_t kLetterBits = 6;

std::string base64(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))
        .toBase64()
        .toStdString();
}

/** Base64 says as much without its padding, and some leave it out. */
std::string_view withoutPadding(std::string_view base64) {
    while (base64.ends_with('=')) {
        base64.remove_suffix(1);
    }
    return base64;
}
} // namespace

void Secrets::add(std::string_view secret) {
    if (!secret.empty()) {
        secrets_.emplace_back(secret);
    }
}

void Secrets::addPassword(std::string_view password) {
    add(password);
    // Three bytes make four letters, so what stands before the password can shift it in three ways.
    for (std::size_t before = 0; before < 3; ++before) {
        const std::string text = base64(std::string(before, '\0').append(password));
        // Letters at the ends have bits of what stands beside the password.
        const std::size_t begin = (before * kByteBits + kLetterBits - 1) / kLetterBits;
        const std::size_t end = (before + password.size()) * kByteBits / kLetterBits;
        constexpr std::size_t fewestLetters = 4;
        if (end >= begin + fewestLetters) {
            add(std::string_view(text).substr(begin, end - begin));
        }
    }
    add(withoutPadding(base64(password)));
}

void Secrets::addHiddenIn(const CommandText& command) {
    if (command.sent == command.shown || !command.shown.ends_with(kHidden)) {
        return;
    }
    const std::size_t open = command.shown.size() - kHidden.size();
    add(withoutPadding(std::string_view(command.sent).substr(std::min(open, command.sent.size()))));
}

std::string Secrets::hiddenIn(std::string_view text) const {
    std::vector<bool> covered(text.size(), false);
    for (const std::string& secret : secrets_) {
        mark(text, secret, covered);
    }
    std::string shown;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!covered[at]) {
            shown += text[at];
        } else if (at == 0 || !covered[at - 1]) {
            shown += kHidden;
        }
    }
    return shown;
}

} // namespace protocol
