#include "tests/support/openssl_client.h"

#include "mailserver/openssl_handles.h"

#include <cerrno>
#include <netinet/in.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace support {

namespace {
using mailserver::openssl;

void trust(SSL_CTX& context, const std::string& rootPem) {
    const mailserver::BioHandle text(
        openssl(BIO_new_mem_buf(rootPem.data(), static_cast<int>(rootPem.size())), "BIO_new_mem_buf"));
    const mailserver::X509Handle root(
        openssl(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), "PEM_read_bio_X509"));
    openssl(X509_STORE_add_cert(SSL_CTX_get_cert_store(&context), root.get()), "X509_STORE_add_cert");
    SSL_CTX_set_verify(&context, SSL_VERIFY_PEER, nullptr);
}
} // namespace

OpensslClient::OpensslClient(std::uint16_t port, ClientOptions options)
    : options_(std::move(options)),
      socket_(checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")),
      ssl_(nullptr, SSL_free) {
    const timeval limit{ServerState::kTimeLimit.count(), 0};
    checked(::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)), "setsockopt");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    checked(::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            "connect");
}

OpensslClient::~OpensslClient() = default;

bool OpensslClient::beginTls(const std::shared_ptr<ssl_session_st>& session) {
    const std::unique_ptr<SSL_CTX, mailserver::OpensslDeleter<SSL_CTX_free>> context(
        openssl(SSL_CTX_new(TLS_client_method()), "SSL_CTX_new"));
    if (options_.takesAnything) {
        openssl(SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION), "SSL_CTX_set_min_proto_version");
        openssl(SSL_CTX_set_cipher_list(context.get(), "DEFAULT:@SECLEVEL=0"), "SSL_CTX_set_cipher_list");
    }
    if (!options_.trustedPem.empty()) {
        trust(*context, options_.trustedPem);
    }
    ssl_.reset(openssl(SSL_new(context.get()), "SSL_new"));
    if (!options_.serverName.empty()) {
        openssl(SSL_set_tlsext_host_name(ssl_.get(), options_.serverName.c_str()),
                "SSL_set_tlsext_host_name");
        openssl(SSL_set1_host(ssl_.get(), options_.serverName.c_str()), "SSL_set1_host");
    }
    if (session) {
        openssl(SSL_set_session(ssl_.get(), session.get()), "SSL_set_session");
    }
    openssl(SSL_set_fd(ssl_.get(), socket_.get()), "SSL_set_fd");
    ERR_clear_error();
    if (SSL_connect(ssl_.get()) == 1) {
        return true;
    }
    failure_ = mailserver::opensslReason();
    return false;
}

void OpensslClient::sendLine(std::string_view line) {
    const std::string bytes = std::string(line) + "\r\n";
    if (ssl_) {
        openssl(SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size())), "SSL_write");
    } else {
        checked(static_cast<int>(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL)), "send");
    }
}

std::string OpensslClient::readBytes(std::size_t most) {
    std::string bytes(most, '\0');
    ERR_clear_error();
    const auto size = ssl_ ? SSL_read(ssl_.get(), bytes.data(), static_cast<int>(most))
                           : ::recv(socket_.get(), bytes.data(), most, 0);
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

std::string OpensslClient::readPiece() {
    return readBytes(16384);
}

std::string OpensslClient::readLine() {
    std::string line;
    for (std::string byte = readBytes(1); !byte.empty(); byte = line.ends_with('\n') ? "" : readBytes(1)) {
        line += byte;
    }
    return line;
}

std::string OpensslClient::readAll() {
    std::string all;
    for (std::string piece = readPiece(); !piece.empty(); piece = readPiece()) {
        all += piece;
    }
    return all;
}

void OpensslClient::hangUp() {
    // A server that has reset the connection leaves nothing to close.
    if (::shutdown(socket_.get(), SHUT_RDWR) < 0 && errno != ENOTCONN) {
        checked(-1, "shutdown");
    }
}

bool OpensslClient::sawCloseNotify() const {
    return ssl_ && (SSL_get_shutdown(ssl_.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
}

std::shared_ptr<ssl_session_st> OpensslClient::session() const {
    return {openssl(SSL_get1_session(ssl_.get()), "SSL_get1_session"), SSL_SESSION_free};
}

} // namespace support
