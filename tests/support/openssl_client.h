#pragma once

#include "tests/support/server_state.h"
#include "tests/support/tls_identity.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct ssl_session_st;
struct ssl_st;

namespace support {

/** How a client speaks TLS. */
struct ClientOptions {
    /** The root that it trusts, in PEM; nothing means that it does not look at the certificate. */
    std::string trustedPem = testRoot().certificatePem();
    /** The host that it asks for, whose name the certificate must have; nothing means no name at all. */
    std::string serverName{};
    /** Takes old protocols and weak signatures too. */
    bool takesAnything = false;
};

/**
 * A plain client with blocking calls, made of OpenSSL alone, for looking at what a server does. It connects
 * to 127.0.0.1; no call takes longer than ServerState::kTimeLimit.
 */
class OpensslClient {
  public:
    explicit OpensslClient(std::uint16_t port, ClientOptions options = {});
    ~OpensslClient();
    OpensslClient(const OpensslClient&) = delete;
    OpensslClient& operator=(const OpensslClient&) = delete;

    /** False when the handshake fails; what failure() says then. A session is resumed where it was given. */
    bool beginTls(const std::shared_ptr<ssl_session_st>& session = nullptr);

    std::string failure() const { return failure_; }

    /** Sends a line, encrypted once TLS has begun; adds the line end. */
    void sendLine(std::string_view line);

    /** One line, with its end, or what there is when the connection ends. */
    std::string readLine();

    /** What one record, or one call in clear, brings; nothing at the end. */
    std::string readPiece();

    /** All that comes to the end of the connection. */
    std::string readAll();

    /** Closes the connection; what has been read stays known. */
    void hangUp();

    /** True when the server has told the end of its text before it closed the connection. */
    bool sawCloseNotify() const;

    /** What a later connection can resume. */
    std::shared_ptr<ssl_session_st> session() const;

  private:
    std::string readBytes(std::size_t most);

    ClientOptions options_;
    FileDescriptor socket_;
    std::unique_ptr<ssl_st, void (*)(ssl_st*)> ssl_;
    std::string failure_;
};

} // namespace support
