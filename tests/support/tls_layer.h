#pragma once

#include "tests/support/server_state.h"
#include "tests/support/tls_identity.h"

#include <memory>
#include <string>
#include <string_view>

struct bio_st;
struct ssl_st;

namespace support {

/** The server's side of TLS without a network: what came from there goes in, and what is to be sent comes
 * out. */
class TlsLayer {
  public:
    enum class Handshake { Unfinished, Done, Failed };

    explicit TlsLayer(const TlsIdentity& identity);
    ~TlsLayer();
    TlsLayer(const TlsLayer&) = delete;
    TlsLayer& operator=(const TlsLayer&) = delete;

    const TlsOptions& options() const noexcept { return identity_.options(); }

    /** Goes on with the handshake as far as what has come allows. */
    Handshake shakeHands();

    /** What is known of the client and the session so far. */
    const TlsSeen& seen() const noexcept { return seen_; }

    void takeFromNetwork(std::string_view bytes);
    std::string bytesForNetwork();

    /** The client's text that has come. */
    std::string read();

    /**
     * Makes one record of the text, or several when it is too long for one.
     * \throws ConversationEnded when the client has broken the session off.
     */
    void write(std::string_view text);

    /** Tells the client that no more text follows. */
    void endText();

    /** True when no more text can come: the client has said so, or what it has sent is no TLS. */
    bool isOver() const;

  private:
    void look();

    TlsIdentity identity_;
    std::unique_ptr<ssl_st, void (*)(ssl_st*)> ssl_;
    /** Both belong to ssl_. */
    bio_st* fromNetwork_ = nullptr;
    bio_st* forNetwork_ = nullptr;
    TlsSeen seen_;
    bool failed_ = false;
};

} // namespace support
