#pragma once

#include "components/directory/conversation.h"
#include "components/transport/connection.h"
#include "components/transport/server_name.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace addresses {

/** The ports of directories (RFC 4513, and the practice of ldaps). */
inline constexpr transport::DefaultPorts kDirectoryPorts{389, 636, 389};

/** How something that a directory was asked for has ended. */
struct DirectoryEnd {
    enum class Kind {
        /** By the server's result, which is `code`. */
        Answered,
        /** The library that knows the protocol cannot be loaded. */
        NoLibrary,
        /** There was no connection, or it could not be encrypted, for the reason in `outcome`. */
        NotOpened,
        /** Encryption is demanded, and the server refuses it with `code`. */
        NotEncrypted,
        /** The connection broke, or the server has said something that is no LDAP. */
        Broken,
        TimedOut
    };

    Kind kind = Kind::Answered;
    transport::Outcome outcome = transport::Outcome::Done;
    /** RFC 4511 section 4.1.9. */
    int code = 0;
    /** What the server has said to it. */
    std::string said{};
};

/** The end, and the entries that have come before it. */
struct DirectoryAnswer {
    DirectoryEnd end;
    std::vector<directory::Entry> entries;
};

/**
 * One session with a directory, beside the windows: nothing here waits, and each answer is told from the
 * event loop. Whoever is told may destroy the session.
 */
class DirectorySession {
  public:
    using Told = std::function<void(DirectoryAnswer)>;

    /** What is waited for when so much time has passed ends with Kind::TimedOut. */
    DirectorySession(transport::ServerName server, std::chrono::milliseconds patience);

    /** Ends the connection at once; nobody is told anything any more. */
    ~DirectorySession();
    DirectorySession(const DirectorySession&) = delete;
    DirectorySession& operator=(const DirectorySession&) = delete;

    /**
     * Connects and encrypts, as the spelling of the server's name asks for. Under a name without a scheme the
     * connection goes on in clear, as a new one, where the server cannot be encrypted with.
     */
    void open(Told told);

    /**
     * Logs on. Where the server has not proven its name the password stays here, and the end is 13,
     * confidentialityRequired.
     */
    void logOn(const std::string& name, const std::string& password, Told told);

    /** Searches. After `most` entries the session ends, as if the server had reached its limit (4). */
    void search(const directory::SearchRequest& request, std::size_t most, Told told);

    /** How the connection that is open, or was open last, is protected. */
    const transport::Protection& protection() const noexcept;

    /** The server's certificate, also where the encryption has failed over it; nothing for none. */
    std::optional<transport::Certificate> certificate() const;

  private:
    class Dialogue;
    std::shared_ptr<Dialogue> dialogue_;
};

} // namespace addresses
