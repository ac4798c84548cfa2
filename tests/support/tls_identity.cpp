#include "tests/support/tls_identity.h"

#include "mailserver/openssl_handles.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace support {

namespace {
using mailserver::BioHandle;
using mailserver::KeyHandle;
using mailserver::openssl;
using mailserver::X509Handle;

/** The text stays with the caller. */
BioHandle reading(const std::string& text) {
    return BioHandle(openssl(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), "BIO_new_mem_buf"));
}

int numberOf(TlsVersion version) {
    switch (version) {
    case TlsVersion::Tls10:
        return TLS1_VERSION;
    case TlsVersion::Tls11:
        return TLS1_1_VERSION;
    case TlsVersion::Tls12:
        return TLS1_2_VERSION;
    case TlsVersion::Tls13:
        break;
    }
    return TLS1_3_VERSION;
}

void present(SSL_CTX& context, const mailserver::Certificate& certificate) {
    const std::string chainPem = certificate.chainPem();
    const BioHandle chain = reading(chainPem);
    const X509Handle leaf(
        openssl(PEM_read_bio_X509(chain.get(), nullptr, nullptr, nullptr), "PEM_read_bio_X509"));
    openssl(SSL_CTX_use_certificate(&context, leaf.get()), "SSL_CTX_use_certificate");
    while (const X509Handle above{PEM_read_bio_X509(chain.get(), nullptr, nullptr, nullptr)}) {
        openssl(SSL_CTX_add1_chain_cert(&context, above.get()), "SSL_CTX_add1_chain_cert");
    }
    // The end of the text counts as an error there.
    ERR_clear_error();
    const BioHandle text = reading(certificate.keyPem);
    const KeyHandle key(
        openssl(PEM_read_bio_PrivateKey(text.get(), nullptr, nullptr, nullptr), "PEM_read_bio_PrivateKey"));
    openssl(SSL_CTX_use_PrivateKey(&context, key.get()), "SSL_CTX_use_PrivateKey");
}

void restrict(SSL_CTX& context, const TlsOptions& options) {
    const bool isWeak = options.maximum < TlsVersion::Tls12;
    openssl(SSL_CTX_set_min_proto_version(&context, isWeak ? TLS1_VERSION : TLS1_2_VERSION),
            "SSL_CTX_set_min_proto_version");
    openssl(SSL_CTX_set_max_proto_version(&context, numberOf(options.maximum)),
            "SSL_CTX_set_max_proto_version");
    const std::string ciphers = options.ciphers.empty() ? "DEFAULT" : options.ciphers;
    openssl(SSL_CTX_set_cipher_list(&context, (ciphers + (isWeak ? ":@SECLEVEL=0" : "")).c_str()),
            "SSL_CTX_set_cipher_list");
    if (!options.resumes) {
        SSL_CTX_set_options(&context, SSL_OP_NO_TICKET);
        SSL_CTX_set_num_tickets(&context, 0);
        SSL_CTX_set_session_cache_mode(&context, SSL_SESS_CACHE_OFF);
    }
}

/**
 * Notes the name that this ClientHello has, also where the session that it resumes has another. The list has
 * one name (RFC 6066 section 3), behind its length, the name's type and the name's length.
 */
int noteServerName(SSL* ssl, int* /*alert*/, void* /*argument*/) {
    const unsigned char* list = nullptr;
    std::size_t size = 0;
    constexpr std::size_t before = 5;
    if (SSL_client_hello_get0_ext(ssl, TLSEXT_TYPE_server_name, &list, &size) == 1 && size >= before) {
        static_cast<std::string*>(SSL_get_app_data(ssl))->assign(list + before, list + size);
    }
    return SSL_CLIENT_HELLO_SUCCESS;
}
} // namespace

TlsIdentity::TlsIdentity(const mailserver::Certificate& certificate, const TlsOptions& options)
    : options_(options), context_(openssl(SSL_CTX_new(TLS_server_method()), "SSL_CTX_new"), SSL_CTX_free) {
    // A weakly signed certificate can be presented only where the ciphers allow for it (@SECLEVEL=0).
    restrict(*context_, options_);
    present(*context_, certificate);
    SSL_CTX_set_client_hello_cb(context_.get(), noteServerName, nullptr);
}

const mailserver::Authority& testRoot() {
    static const mailserver::Authority root("The root of these tests");
    return root;
}

mailserver::CertificateDescription loopback() {
    mailserver::CertificateDescription description;
    description.names = {"localhost"};
    description.addresses = {"127.0.0.1", "::1"};
    return description;
}

} // namespace support
