#pragma once

#include "mailserver/certificates.h"
#include "tests/support/temporary_folder.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace support {

struct SlapdOptions {
    /** Entries below kSlapdBase, as LDIF; persons() makes some. */
    std::string entries;
    /** Lines of the configuration, for the whole server and for the database. */
    std::string serverLines{};
    std::string databaseLines{};
    /** For TLS; without one there is none. */
    std::optional<mailserver::Certificate> certificate{};
};

inline constexpr const char* kSlapdBase = "dc=example,dc=org";

/** Persons of these numbers as LDIF: uid "personN", cn "Person N", mail "personN@example.org". */
std::string persons(int first, int last);

/** One person as LDIF; the password may be empty. Further lines may follow, each with its line end. */
std::string person(const std::string& uid, const std::string& name, const std::string& mail,
                   const std::string& password = {}, const std::string& lines = {});

/**
 * A real slapd on free ports of this computer, with configuration and database in a temporary folder of its
 * own. It ends with the object, and with the test's process should that die.
 */
class SlapdServer {
  public:
    /** Why no server can be had on this computer, in a sentence to skip a test with; empty when one can. */
    static std::string whyUnavailable();

    /**
     * Starts the server and returns when it takes connections.
     * \throws std::runtime_error, with its log, when it does not.
     */
    explicit SlapdServer(SlapdOptions options);
    ~SlapdServer();
    SlapdServer(const SlapdServer&) = delete;
    SlapdServer& operator=(const SlapdServer&) = delete;

    /** "127.0.0.1:port", where StartTLS can be asked for. */
    QString address() const;

    /** The same with the port where TLS is spoken from the first byte on. */
    QString tlsAddress() const;

    /** What the server has written. */
    std::string log() const;

    /** Ends the server at once, in the middle of whatever it does. */
    void kill();

    /** Stops the server without ending it: it says nothing more. */
    void freeze() const;

  private:
    bool start();
    std::string configuration() const;
    void run(const std::vector<std::string>& command) const;

    SlapdOptions options_;
    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    std::uint16_t tlsPort_ = 0;
    pid_t process_ = 0;
};

} // namespace support
