#pragma once

#include "demo/listener.h"
#include "mailserver/mailbox.h"

#include <QThread>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace selftest {

/** The name and the password that the servers take. */
inline constexpr const char* kMember = "member";
inline constexpr const char* kPassword = "a password for this test";

enum class Encrypted { No, Yes };

/**
 * A server of each protocol on the loopback address, in a thread of its own, since the windows wait for it.
 * With encryption, that for mail speaks TLS from the first byte on and that for sending behind STARTTLS; both
 * let members log on in ways that do not show the password, and sending demands it.
 */
class LocalServers {
  public:
    /**
     * The messages wait in the mailbox. The root of the certificate is written into the file.
     * \throws std::runtime_error when there is no port, or no TLS.
     */
    LocalServers(const std::vector<std::string>& messages, Encrypted encrypted,
                 const std::filesystem::path& root);
    ~LocalServers();
    LocalServers(const LocalServers&) = delete;
    LocalServers& operator=(const LocalServers&) = delete;

    /** The servers as the settings name them. */
    const std::string& popServer() const noexcept { return popServer_; }

    const std::string& smtpServer() const noexcept { return smtpServer_; }

    /** How many messages are in the mailbox now. */
    std::size_t messageCount();

  private:
    void start(const std::vector<std::string>& messages, Encrypted encrypted,
               const std::filesystem::path& root);

    QThread thread_;
    /** Lives in the thread; what follows is used there only. */
    QObject inThread_;
    mailserver::Mailbox mailbox_;
    std::optional<demo::Listener> pop_;
    std::optional<demo::Listener> smtp_;
    std::string popServer_;
    std::string smtpServer_;
};

} // namespace selftest
