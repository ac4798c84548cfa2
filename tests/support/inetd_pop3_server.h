#pragma once

#include "tests/support/temporary_folder.h"

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace support {

/**
 * One of the POP3 servers that inetd starts anew for each connection, on a free port of this computer. The
 * test is its inetd. Such a server serves users of the system from the system's mail folder, so it gets an
 * /etc/passwd, an /etc/shadow and a /var/mail of its own, which nobody else sees. Only the superuser can do
 * that. The one account is bob with the password "secret".
 */
class InetdPop3Server {
  public:
    enum class Program { Popa3d, SolidPop3d, MailutilsPop3d };

    /** Why the server cannot be had on this computer, in a sentence to skip a test with; empty when it can.
     */
    static std::string whyUnavailable(Program program);

    /** Returns when connections are taken. \throws std::runtime_error when the surroundings cannot be had. */
    explicit InetdPop3Server(Program program);

    ~InetdPop3Server();
    InetdPop3Server(const InetdPop3Server&) = delete;
    InetdPop3Server& operator=(const InetdPop3Server&) = delete;

    /** The server's name as the settings want it: "127.0.0.1:port". */
    QString address() const;

    /**
     * Puts a message behind those that wait. No line may begin with "From ". Servers see it in the next
     * session.
     */
    void deliver(std::string_view message) const;

    /** What is in the mailbox's file, with the server's own notes. */
    std::string mailbox() const { return folder_.read("mail/bob"); }

  private:
    void makeAccount() const;
    void makeSecret(Program program) const;
    void start(Program program);

    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    pid_t process_ = 0;
};

} // namespace support
