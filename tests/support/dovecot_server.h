#pragma once

#include "tests/support/temporary_folder.h"

#include <QString>

#include <cstdint>
#include <filesystem>
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

    /** Why no server can be had on this computer, in a sentence to skip a test with; empty when one can. */
    static std::string whyUnavailable();

    /** Starts the server and returns when it greets. \throws std::runtime_error, with its log, when it does
     * not. */
    explicit DovecotServer(const Account& account);

    DovecotServer() : DovecotServer(Account()) {}

    ~DovecotServer();
    DovecotServer(const DovecotServer&) = delete;
    DovecotServer& operator=(const DovecotServer&) = delete;

    /** The server's name as the settings want it: "127.0.0.1:port". */
    QString address() const;

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

  private:
    bool start(const Account& account);
    void stop();
    void makeMailFolder() const;
    std::string configuration() const;

    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    pid_t process_ = 0;
    int delivered_ = 0;
};

} // namespace support
