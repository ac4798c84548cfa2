#pragma once

#include <array>
#include <memory>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>
#include <stdexcept>
#include <string>

namespace mailserver {

/** Frees one of OpenSSL's objects with the function that is made for it. */
template <auto Free>
struct OpensslDeleter {
    template <class Object>
    void operator()(Object* object) const {
        Free(object);
    }
};

using BioHandle = std::unique_ptr<BIO, OpensslDeleter<BIO_free>>;
using KeyHandle = std::unique_ptr<EVP_PKEY, OpensslDeleter<EVP_PKEY_free>>;
using X509Handle = std::unique_ptr<X509, OpensslDeleter<X509_free>>;

/** Why the last call failed, in OpenSSL's words; its list of errors is empty afterwards. */
inline std::string opensslReason() {
    std::array<char, 256> text{};
    ERR_error_string_n(ERR_peek_last_error(), text.data(), text.size());
    ERR_clear_error();
    return text.data();
}

/** The result of a call that gives a positive number or an object, and 0, a negative number or null when it
 * fails. \throws std::runtime_error then.
 */
template <class Result>
Result openssl(Result result, const char* call) {
    bool failed = false;
    if constexpr (std::is_integral_v<Result>) {
        failed = result <= 0;
    } else {
        failed = result == nullptr;
    }
    if (failed) {
        throw std::runtime_error(std::string(call) + ": " + opensslReason());
    }
    return result;
}

} // namespace mailserver
