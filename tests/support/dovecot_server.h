#pragma once

#include "mailserver/certificates.h"
#include "tests/support/temporary_folder.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace support {

/**
 * A real Dovecot with one POP3 account, on a free port of this computer, with configuration, mail folder,
 * sockets and log in a temporary folder of its own. It ends with the object, and with the test's process
 * should that die. It runs as whoever runs the tests, the superuser included.
 */
class DovecotServer {
  public:
    struct Account {
        /** Neither may hold a colon or a line end. */
        std::string user = "bob";
        std::string password = "secret";
    };

    /** How the server is set up. */
    struct Options {
        Account account{};
        /**
         * What it presents when it speaks TLS: after STLS, and at a second port from the first byte on.
         * Without one it speaks none.
         */
        std::optional<mailserver::Certificate> certificate{};
        /** In Dovecot's words. USER and PASS need "plain". */
        std::string mechanisms = "plain";
        /**
         * False: no log-on in clear shows the password. Dovecot believes that nobody overhears a client at
         * its own address, so the server's is 127.0.0.2 then.
         */
        bool takesPasswordInClear = true;
    };

    /** Why no server can be had on this computer, in a sentence to skip a test with; empty when one can. */
    static std::string whyUnavailable();

    /** Starts the server and returns when it greets. \throws std::runtime_error, with its log, when it does
     * not. */
    explicit DovecotServer(Options options);

    explicit DovecotServer(const Account& account);

    DovecotServer() : DovecotServer(Account()) {}

    ~DovecotServer();
    DovecotServer(const DovecotServer&) = delete;
    DovecotServer& operator=(const DovecotServer&) = delete;

    /** The server's name as the settings want it: "127.0.0.1:port". */
    QString address() const;

    /** The same with the port where TLS is spoken from the first byte on. Needs a certificate. */
    QString tlsAddress() const;

    /** Puts a message behind those that wait. Lines end in CR LF, the last one too, to come back as they are.
     */
    void deliver(std::string_view message);

    /** The folder that the mail is kept in, a Maildir. Who runs the server may write to it, and nobody where
     * that is the superuser. */
    std::filesystem::path maildir() const;

    /** The messages in the mailbox, in the order of delivery, byte for byte. */
    std::vector<std::string> messages() const;

    /** What the server has written to its log. */
    std::string log() const;

    /**
     * Waits until so many connections have ended, or have become sessions, since the start, and returns how
     * many attempts to log on were refused in these. \throws std::runtime_error when they do not end.
     */
    std::size_t refusedAttempts(std::size_t connections) const;

  private:
    bool start();
    void stop();
    void makeMailFolder() const;
    std::string host() const;
    std::string configuration() const;
    std::string encryption() const;

    Options options_;
    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    std::uint16_t tlsPort_ = 0;
    pid_t process_ = 0;
    int delivered_ = 0;
};

} // namespace support
