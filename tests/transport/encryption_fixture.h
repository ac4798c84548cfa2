#pragma once

#include "tests/support/scripted_server.h"
#include "tests/support/trusted_root.h"
#include "tests/transport/connection_fixture.h"

#include <QDeadlineTimer>
#include <QString>

#include <array>
#include <string>

namespace support {

/** The spellings of a server's name that lead to encryption. */
inline constexpr std::array<transport::Security, 3> kEncrypting{
    transport::Security::FromTheStart, transport::Security::Demanded, transport::Security::WhenOffered};

/** A connection that is to be encrypted. The program trusts testRoot(). */
class EncryptionFixture : public ConnectionFixture {
  protected:
    static TlsIdentity valid(const TlsOptions& options = {}) {
        return TlsIdentity(testRoot().issue(loopback()), options);
    }

    /** Opens and encrypts a connection, without a word in clear between the two. */
    transport::Outcome openEncrypted(const ScriptedServer& server, transport::Security security,
                                     const char* host = "127.0.0.1", QDeadlineTimer deadline = soon()) {
        using transport::Outcome;
        using transport::Security;
        const Outcome outcome = connection.open({QString::fromUtf8(host), server.port(), security}, deadline);
        const bool isOver = outcome != Outcome::Done || security == Security::FromTheStart;
        return isOver ? outcome : connection.encrypt(deadline);
    }

    /** All bytes that come until the stream ends. */
    std::string takeAll() {
        std::string bytes;
        while (connection.waitForBytes(soon()) == transport::Outcome::Done) {
            bytes += connection.takeBytes();
        }
        return bytes;
    }

    TrustedRoot trusted;
};

} // namespace support
