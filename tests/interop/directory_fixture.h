#pragma once

#include "addresses/directory_source.h"
#include "tests/support/looked_up.h"
#include "tests/support/slapd_server.h"
#include "tests/support/trusted_root.h"

#include <gtest/gtest.h>

#include <string>

namespace support {

/** A real directory, and ann who is in it. */
class DirectoryTest : public testing::Test {
  protected:
    static constexpr const char* kPassword = "correct horse";

    void SetUp() override {
        if (const std::string reason = SlapdServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        application();
    }

    static addresses::DirectorySettings settingsFor(const QString& server) {
        return {server.toStdString(), kSlapdBase, "ann", kPassword};
    }

    static addresses::FoundAddresses lookedUpAt(const QString& server, const std::string& typed) {
        return lookedUp(*addresses::makeDirectorySource(settingsFor(server)), typed);
    }

    static SlapdOptions withAnn() {
        return {.entries = person("ann", "Ann Miller", "ann@example.org", kPassword),
                .certificate = trustedCertificate()};
    }

    static addresses::FoundAddress found(const std::string& name, const std::string& address) {
        return {name, address, "Directory Server"};
    }

    TrustedRoot trustedRoot;
};

} // namespace support
