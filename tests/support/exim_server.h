#pragma once

#include "tests/support/exim_configuration.h"
#include "tests/support/temporary_folder.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace support {

/**
 * A real Exim on a free port of this computer, with configuration, spool and log in a temporary folder of its
 * own. It takes mail for everybody at example.org but nobody@example.org, up to kSizeLimit bytes, and puts
 * each recipient's copy into one Maildir, with the recipient in an Envelope-To line. It ends with the object,
 * and with the test's process should that die. It runs as whoever runs the tests, the superuser included.
 */
class EximServer {
  public:
    static constexpr std::int64_t kSizeLimit = 60LL << 20;

    using Options = EximOptions;

    /** Why no server can be had on this computer, in a sentence to skip a test with; empty when one can. */
    static std::string whyUnavailable();

    /**
     * Starts the server and returns when it greets. The Maildir is one that Dovecot serves.
     * \throws std::runtime_error, with its log, when it does not.
     */
    EximServer(std::filesystem::path maildir, Options options);

    explicit EximServer(std::filesystem::path maildir);

    ~EximServer();
    EximServer(const EximServer&) = delete;
    EximServer& operator=(const EximServer&) = delete;

    /** The server's name as the settings want it: "127.0.0.1:port". */
    QString address() const;

    /** The same with the port where TLS is spoken from the first byte on. Needs a certificate. */
    QString tlsAddress() const;

    /**
     * Waits until all mail that was taken has been delivered and that many messages have arrived in the
     * Maildir since the server started. Returns how many have, when the time is up at the latest.
     */
    std::size_t awaitMessages(std::size_t count) const;

    /** Messages that have been taken and not delivered yet. */
    std::size_t messagesInQueue() const;

    /** What the server has written to its logs. */
    std::string log() const;

    /** How many attempts to log on have been refused in sessions that have ended, or gone on since. */
    std::size_t refusedAttempts() const;

  private:
    bool start();
    void stop();
    std::string configuration() const;
    std::size_t messagesInMaildir() const;

    std::filesystem::path maildir_;
    Options options_;
    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    std::uint16_t tlsPort_ = 0;
    pid_t process_ = 0;
    /** Ends the server when the other end of its pipe, held by the test, is closed. */
    pid_t guard_ = 0;
    int guardPipe_ = -1;
    std::size_t messagesBefore_ = 0;
};

} // namespace support
