#include "tests/support/faulty_tls.h"

#include "platform/runtime_error.h"

#include <chrono>
#include <cstddef>
#include <utility>

namespace support {

TlsIdentity validIdentity(const TlsOptions& options) {
    return TlsIdentity(testRoot().issue(loopback()), options);
}

std::vector<TlsOptions> brokenHandshakes() {
    std::vector<TlsOptions> all{{.maximum = TlsVersion::Tls11}};
    using enum HandshakeFault::Kind;
    for (const HandshakeFault::Kind kind : {Close, Reset, Garbage}) {
        for (const std::size_t flight : {0U, 1U}) {
            for (const std::size_t bytes : {0U, 20U}) {
                all.push_back(
                    {.maximum = TlsVersion::Tls12, .resumes = false, .fault = {kind, flight, bytes}});
            }
        }
    }
    // Each of these takes the client's whole time-out.
    for (const std::size_t flight : {0U, 1U}) {
        all.push_back({.maximum = TlsVersion::Tls12, .resumes = false, .fault = {Silence, flight, 5}});
    }
    return all;
}

std::vector<FaultyCertificate> faultyCertificates() {
    namespace errors = platform::errors;
    mailserver::CertificateDescription forAnother = loopback();
    forAnother.names = {"mail.example.org"};
    forAnother.addresses = {"127.0.0.2"};
    mailserver::CertificateDescription expired = loopback();
    expired.notBefore = -std::chrono::hours(2);
    expired.notAfter = -std::chrono::hours(1);
    return {{"self-signed", mailserver::selfSigned(loopback()), errors::CertificateNotTrusted},
            {"for another name", testRoot().issue(forAnother), errors::CertificateForOtherName},
            {"expired", testRoot().issue(expired), errors::CertificateNotValidNow}};
}

Conversation saying(std::string bytes, void (Peer::*action)()) {
    return [bytes = std::move(bytes), action](Peer& peer) {
        peer.send(bytes);
        if (action != nullptr) {
            (peer.*action)();
        }
    };
}

std::vector<Conversation> inPiecesOfAllKinds(const std::string& bytes) {
    std::vector<Conversation> ways;
    for (std::size_t count = 1; count <= bytes.size(); ++count) {
        ways.emplace_back([bytes, count](Peer& peer) { peer.send(bytes, count); });
        ways.emplace_back([bytes, count](Peer& peer) {
            peer.send(bytes.substr(0, count - 1));
            peer.trickle(bytes.substr(count - 1, 1), std::chrono::milliseconds(2));
            peer.send(bytes.substr(count));
        });
    }
    return ways;
}

} // namespace support
