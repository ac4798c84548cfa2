#include "tests/support/tls_layer.h"

#include "mailserver/openssl_handles.h"

#include <array>
#include <openssl/ssl.h>

namespace support {

using mailserver::openssl;

TlsLayer::TlsLayer(const TlsIdentity& identity)
    : identity_(identity),
      ssl_(openssl(SSL_new(identity.context()), "SSL_new"), SSL_free),
      fromNetwork_(openssl(BIO_new(BIO_s_mem()), "BIO_new")),
      forNetwork_(openssl(BIO_new(BIO_s_mem()), "BIO_new")) {
    SSL_set_bio(ssl_.get(), fromNetwork_, forNetwork_);
    SSL_set_accept_state(ssl_.get());
    SSL_set_app_data(ssl_.get(), &seen_.serverName);
}

TlsLayer::~TlsLayer() = default;

TlsLayer::Handshake TlsLayer::shakeHands() {
    ERR_clear_error();
    const int result = SSL_do_handshake(ssl_.get());
    const bool waits = result <= 0 && SSL_get_error(ssl_.get(), result) == SSL_ERROR_WANT_READ;
    look();
    if (result <= 0 && !waits) {
        failed_ = true;
        seen_.failure = mailserver::opensslReason();
        return Handshake::Failed;
    }
    return waits ? Handshake::Unfinished : Handshake::Done;
}

void TlsLayer::look() {
    seen_.handshakeDone = SSL_is_init_finished(ssl_.get()) == 1;
    seen_.protocol = seen_.handshakeDone ? SSL_get_version(ssl_.get()) : "";
    seen_.resumed = seen_.handshakeDone && SSL_session_reused(ssl_.get()) == 1;
}

void TlsLayer::takeFromNetwork(std::string_view bytes) {
    if (!bytes.empty()) {
        openssl(BIO_write(fromNetwork_, bytes.data(), static_cast<int>(bytes.size())), "BIO_write");
    }
}

std::string TlsLayer::bytesForNetwork() {
    std::string bytes(BIO_ctrl_pending(forNetwork_), '\0');
    if (!bytes.empty()) {
        openssl(BIO_read(forNetwork_, bytes.data(), static_cast<int>(bytes.size())), "BIO_read");
    }
    return bytes;
}

std::string TlsLayer::read() {
    std::string text;
    std::array<char, 16384> piece{};
    ERR_clear_error();
    int size = 0;
    while (!failed_ && (size = SSL_read(ssl_.get(), piece.data(), static_cast<int>(piece.size()))) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    failed_ = failed_ || SSL_get_error(ssl_.get(), size) == SSL_ERROR_SSL;
    return text;
}

void TlsLayer::write(std::string_view text) {
    ERR_clear_error();
    if (SSL_write(ssl_.get(), text.data(), static_cast<int>(text.size())) <= 0) {
        throw ConversationEnded{};
    }
}

void TlsLayer::endText() {
    if (!failed_ && options().closeNotify) {
        SSL_shutdown(ssl_.get());
    }
}

bool TlsLayer::isOver() const {
    return failed_ || (SSL_get_shutdown(ssl_.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
}

} // namespace support
