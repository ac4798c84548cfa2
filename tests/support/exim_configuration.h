#pragma once

#include "mailserver/certificates.h"

#include <cstdint>
#include <optional>
#include <string>

namespace support {

/** Who can log on with AUTH. */
struct EximAccount {
    std::string user = "bob";
    std::string password = "secret";
};

/** What a real Exim is to be like for a test. */
struct EximOptions {
    /**
     * What it presents when it speaks TLS: after STARTTLS, and at a second port from the first byte on.
     * Without one it speaks none.
     */
    std::optional<mailserver::Certificate> certificate{};
    /** Without one AUTH is not offered. */
    std::optional<EximAccount> account{};
    /** The mechanisms of AUTH, of PLAIN, LOGIN and CRAM-MD5, with blanks between them. */
    std::string mechanisms = "PLAIN LOGIN CRAM-MD5";
    /** AUTH is offered on encrypted connections only. */
    bool logOnNeedsTls = false;
    /** The answer to MAIL in clear: code, status and words. Without one the mail is taken. */
    std::string answerToMailInClear{};
    /** The same to RCPT by somebody who has not logged on. */
    std::string answerToStrangers{};
};

/** Where that Exim is, and as whom it runs. */
struct EximPlaces {
    /** The folder of its spool, its logs and its certificate (certificate.pem and .key). */
    std::string folder;
    std::string maildir;
    std::string user;
    std::string group;
    std::uint16_t port = 0;
    /** For TLS from the first byte on. */
    std::uint16_t tlsPort = 0;
    /** Bytes. */
    std::int64_t sizeLimit = 0;
};

/**
 * The text of its configuration. It takes mail for everybody at example.org but nobody@example.org, and puts
 * each recipient's copy into the one Maildir.
 */
std::string eximConfiguration(const EximOptions& options, const EximPlaces& places);

} // namespace support
