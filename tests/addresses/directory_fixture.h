#pragma once

// What tests of a directory share: what a server says, and a place to look addresses up at it.

#include "addresses/directory_source.h"
#include "tests/support/looked_up.h"
#include "tests/support/scripted_server.h"

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

// LDAP as a server writes it (RFC 4511), in BER.

inline std::string tlv(char tag, const std::string& value) {
    std::string length;
    if (value.size() < 0x80) {
        length = static_cast<char>(value.size());
    } else {
        length = {'\x84', static_cast<char>(value.size() >> 24U), static_cast<char>(value.size() >> 16U),
                  static_cast<char>(value.size() >> 8U), static_cast<char>(value.size())};
    }
    return tag + length + value;
}

inline std::string message(int number, const std::string& operation) {
    return tlv('\x30', tlv('\x02', std::string(1, static_cast<char>(number))) + operation);
}

inline std::string result(char tag, int code, const std::string& said = {}) {
    return tlv(tag,
               tlv('\x0a', std::string(1, static_cast<char>(code))) + tlv('\x04', "") + tlv('\x04', said));
}

inline std::string searchDone(int number, int code) {
    return message(number, result('\x65', code));
}

inline std::string startTlsAnswer(int code) {
    return message(1, result('\x78', code));
}

inline std::string attribute(const std::string& name, const std::vector<std::string>& values) {
    std::string set;
    for (const std::string& value : values) {
        set += tlv('\x04', value);
    }
    return tlv('\x30', tlv('\x04', name) + tlv('\x31', set));
}

inline std::string entry(int number, const std::string& attributes) {
    return message(number, tlv('\x64', tlv('\x04', "uid=ann") + tlv('\x30', attributes)));
}

inline std::string ann(int number) {
    return entry(number, attribute("cn", {"Ann"}) + attribute("mail", {"ann@example.org"}));
}

/** Says this as soon as it has been asked something. */
inline Conversation saying(std::string bytes, std::size_t pieceBytes = 0) {
    return [bytes = std::move(bytes), pieceBytes](Peer& peer) {
        peer.awaitBytes();
        peer.send(bytes, pieceBytes);
        peer.holdSilent();
    };
}

/** Says this and hangs up. */
inline Conversation lastSaying(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) {
        peer.awaitBytes();
        peer.send(bytes);
        peer.close();
    };
}

inline Conversation silent() {
    return Script{HoldSilent{}};
}

inline std::unique_ptr<addresses::AddressSource>
sourceFor(const QString& server, std::chrono::milliseconds patience = std::chrono::seconds(10)) {
    return addresses::makeDirectorySource({server.toStdString(), "dc=example", "ann", "secret", patience});
}

inline addresses::FoundAddresses lookedUpAt(const ScriptedServer& server, const char* scheme = "plain://",
                                            std::chrono::milliseconds patience = std::chrono::seconds(10)) {
    return lookedUp(*sourceFor(QString::fromLatin1(scheme) + server.address(), patience), "ann");
}

} // namespace support
