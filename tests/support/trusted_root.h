#pragma once

#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tls_identity.h"

namespace support {

/** Lets the program trust testRoot() for as long as it lives, as an administrator would. */
class TrustedRoot {
    TemporaryFolder folder_;
    EnvironmentVariable variable_{"SSL_CERT_FILE",
                                  folder_.write("root.pem", testRoot().certificatePem()).string()};
};

/** A certificate of that root for this computer. */
inline mailserver::Certificate trustedCertificate() {
    return testRoot().issue(loopback());
}

} // namespace support
