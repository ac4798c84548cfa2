#pragma once

// Servers that spoil the encryption, for the tests of both clients.

#include "tests/support/peer.h"
#include "tests/support/tls_identity.h"

#include <string>
#include <vector>

namespace support {

/** One with a certificate for this computer. */
TlsIdentity validIdentity(const TlsOptions& options = {});

/** Every way in which a server can break a handshake off; a few only fall silent. */
std::vector<TlsOptions> brokenHandshakes();

/** A certificate with a fault, and the number of the error where the server has to prove its name. */
struct FaultyCertificate {
    const char* name;
    mailserver::Certificate certificate;
    int error = 0;
};

/** One certificate for each number. */
std::vector<FaultyCertificate> faultyCertificates();

/** Says this, and then does what the peer can do, if anything. */
Conversation saying(std::string bytes, void (Peer::*action)() = nullptr);

/** What an invitation to encrypt may be answered with, by the name of the case. */
struct BadAnswer {
    const char* name;
    Conversation answer;
};

/** Every way to cut the bytes in two with a pause between, and every size of pieces without pauses. */
std::vector<Conversation> inPiecesOfAllKinds(const std::string& bytes);

} // namespace support
