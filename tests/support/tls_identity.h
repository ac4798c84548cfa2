#pragma once

// Who a scripted server is when it speaks TLS, and what it does otherwise than a server should:
//
//     TlsIdentity valid(testRoot().issue(loopback()));
//     ScriptedServer fromTheFirstByte(overTls(valid, Script{Send{"+OK ready\r\n"}, ...}));
//     ScriptedServer upgrading(Script{Send{"+OK ready\r\n"}, ExpectLine{}, Send{"+OK\r\n"}, BeginTls{valid},
//     ...}); EXPECT_EQ(upgrading.tls(0).serverName, "mail.example.org");

#include "mailserver/certificates.h"

#include <cstddef>
#include <memory>
#include <string>

struct ssl_ctx_st;

namespace support {

enum class TlsVersion { Tls10, Tls11, Tls12, Tls13 };

/** Where a server's handshake breaks off, and how. */
struct HandshakeFault {
    enum class Kind { None, Close, Reset, Garbage, Silence };
    Kind kind = Kind::None;
    /**
     * So many of the server's flights go out as they should. The first one answers the ClientHello; with
     * TLS 1.3 the client is through after that one, with TLS 1.2 after the second.
     */
    std::size_t flights = 0;
    /** Of the next flight so many bytes go out. */
    std::size_t bytes = 0;
};

struct TlsOptions {
    /** Below TLS 1.2 the server takes what nobody should, TLS 1.0 and weak signatures too. */
    TlsVersion maximum = TlsVersion::Tls13;
    /** In OpenSSL's words, for TLS 1.2 and below; nothing means its own choice. */
    std::string ciphers{};
    /** Bytes of text in a record, each of which is sent by itself; 0 means as many as there are. */
    std::size_t recordBytes = 0;
    /** Sessions can be resumed, by tickets or by number. */
    bool resumes = true;
    /** The end of the text is told before the connection is closed. */
    bool closeNotify = true;
    HandshakeFault fault{};
};

/** A server's certificate and its way of speaking TLS. A handle: copies resume one another's sessions. */
class TlsIdentity {
  public:
    /** \throws std::runtime_error when OpenSSL refuses the certificate, its key or the ciphers. */
    explicit TlsIdentity(const mailserver::Certificate& certificate, const TlsOptions& options = {});

    const TlsOptions& options() const noexcept { return options_; }

    /** Each session of it needs a std::string as its application data, for the name that the client asks for.
     */
    ssl_ctx_st* context() const noexcept { return context_.get(); }

  private:
    TlsOptions options_;
    std::shared_ptr<ssl_ctx_st> context_;
};

/** A root of this process's own, made at the first call. */
const mailserver::Authority& testRoot();

/** Describes a certificate for localhost, 127.0.0.1 and ::1. */
mailserver::CertificateDescription loopback();

} // namespace support
