#include "mailserver/scram.h"

#include <algorithm>

namespace mailserver {

namespace {

using Outcome = SaslMechanism::Outcome;

/** Takes "x=value" with this letter, and the comma behind it, off the message; nothing when something else
 * comes. */
std::optional<std::string_view> takeAttribute(std::string_view& message, char letter) {
    if (message.size() < 2 || message[0] != letter || message[1] != '=') {
        return std::nullopt;
    }
    const std::size_t end = std::min(message.find(','), message.size());
    const std::string_view value = message.substr(2, end - 2);
    message.remove_prefix(std::min(end + 1, message.size()));
    return value;
}

/** The name with its commas and equal signs put back (RFC 5802 section 5.1). */
std::optional<std::string> nameOf(std::string_view text) {
    std::string name;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '=') {
            name += text[at];
            continue;
        }
        const std::string_view code = text.substr(at + 1, 2);
        if (code != "2C" && code != "3D") {
            return std::nullopt;
        }
        name += code == "2C" ? ',' : '=';
        at += 2;
    }
    return name;
}

std::string exclusiveOr(std::string left, std::string_view right) {
    std::transform(left.begin(), left.end(), right.begin(), left.begin(),
                   [](char one, char other) { return static_cast<char>(one ^ other); });
    return left;
}

} // namespace

Scram::Scram(Digest digest, const Accounts& accounts, const SaslSettings& settings)
    : digest_(digest),
      accounts_(accounts),
      salt_(settings.salt.empty() ? randomToken(12) : settings.salt),
      iterations_(settings.iterations),
      nonce_(settings.nonce.empty() ? randomToken(18) : settings.nonce) {}

SaslMechanism::Answer Scram::begin(const std::optional<std::string>& response) {
    return response ? respond(*response) : Answer{Outcome::Challenge};
}

SaslMechanism::Answer Scram::respond(const std::string& response) {
    switch (state_) {
    case State::First:
        return takeFirst(response);
    case State::Final:
        return takeFinal(response);
    case State::Confirmed:
        break;
    }
    // The client has the server's signature and agrees with it.
    return {response.empty() ? Outcome::Accepted : Outcome::Malformed};
}

SaslMechanism::Answer Scram::takeFirst(std::string_view message) {
    const std::size_t flagEnd = message.find(',');
    const std::size_t prefaceEnd = message.find(',', flagEnd + 1);
    const std::string_view flag = message.substr(0, flagEnd);
    if (flagEnd == std::string_view::npos || prefaceEnd == std::string_view::npos ||
        (flag != "n" && flag != "y")) {
        return {Outcome::Malformed};
    }
    preface_ = message.substr(0, prefaceEnd + 1);
    std::string_view rest = message.substr(prefaceEnd + 1);
    exchanged_ = rest;
    const auto user = takeAttribute(rest, 'n');
    const auto name = user ? nameOf(*user) : std::nullopt;
    const auto nonce = takeAttribute(rest, 'r');
    if (!name || !nonce || nonce->empty()) {
        return {Outcome::Malformed};
    }
    password_ = accounts_.passwordOf ? accounts_.passwordOf(*name) : std::nullopt;
    nonce_.insert(0, *nonce);
    state_ = State::Final;
    const std::string first = "r=" + nonce_ + ",s=" + toBase64(salt_) + ",i=" + std::to_string(iterations_);
    exchanged_ += "," + first;
    return {Outcome::Challenge, first};
}

SaslMechanism::Answer Scram::takeFinal(std::string_view message) {
    const std::size_t proofStart = std::min(message.rfind(",p="), message.size());
    std::string_view rest = message;
    const auto binding = takeAttribute(rest, 'c');
    const auto nonce = takeAttribute(rest, 'r');
    std::string_view last = message.substr(std::min(proofStart + 1, message.size()));
    const auto proof = takeAttribute(last, 'p');
    if (!binding || !nonce || !proof || *binding != toBase64(preface_)) {
        return {Outcome::Malformed};
    }
    if (!password_ || *nonce != nonce_) {
        return {Outcome::Refused};
    }
    const std::string salted = stretched(digest_, *password_, salt_, iterations_);
    const std::string clientKey = hmacOf(digest_, salted, "Client Key");
    const std::string text = exchanged_ + "," + std::string(message.substr(0, proofStart));
    const std::string signature = hmacOf(digest_, digestOf(digest_, clientKey), text);
    if (*proof != toBase64(exclusiveOr(clientKey, signature))) {
        return {Outcome::Refused};
    }
    state_ = State::Confirmed;
    return {Outcome::Challenge,
            "v=" + toBase64(hmacOf(digest_, hmacOf(digest_, salted, "Server Key"), text))};
}

} // namespace mailserver
