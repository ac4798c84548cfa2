#include "mailserver/digests.h"

#include "mailserver/openssl_handles.h"

#include <QByteArray>

#include <array>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

namespace mailserver {

namespace {

const EVP_MD* algorithmOf(Digest digest) {
    switch (digest) {
    case Digest::Md5:
        return EVP_md5();
    case Digest::Sha1:
        return EVP_sha1();
    case Digest::Sha256:
        break;
    }
    return EVP_sha256();
}

const unsigned char* unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* unsignedBytes(std::string& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

QByteArray byteArray(std::string_view bytes) {
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

} // namespace

std::string digestOf(Digest digest, std::string_view bytes) {
    std::string result(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    openssl(
        EVP_Digest(bytes.data(), bytes.size(), unsignedBytes(result), &size, algorithmOf(digest), nullptr),
        "EVP_Digest");
    result.resize(size);
    return result;
}

std::string hmacOf(Digest digest, std::string_view key, std::string_view bytes) {
    std::string result(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    openssl(HMAC(algorithmOf(digest), key.data(), static_cast<int>(key.size()), unsignedBytes(bytes),
                 bytes.size(), unsignedBytes(result), &size),
            "HMAC");
    result.resize(size);
    return result;
}

std::string stretched(Digest digest, std::string_view password, std::string_view salt, unsigned iterations) {
    const EVP_MD* const algorithm = algorithmOf(digest);
    std::string result(static_cast<std::size_t>(EVP_MD_get_size(algorithm)), '\0');
    openssl(PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), unsignedBytes(salt),
                              static_cast<int>(salt.size()), static_cast<int>(iterations), algorithm,
                              static_cast<int>(result.size()), unsignedBytes(result)),
            "PKCS5_PBKDF2_HMAC");
    return result;
}

std::string randomToken(std::size_t bytes) {
    std::string token(bytes, '\0');
    openssl(RAND_bytes(unsignedBytes(token), static_cast<int>(bytes)), "RAND_bytes");
    return toBase64(token);
}

std::string lowerHex(std::string_view bytes) {
    return byteArray(bytes).toHex().toStdString();
}

std::string toBase64(std::string_view bytes) {
    return byteArray(bytes).toBase64().toStdString();
}

std::optional<std::string> fromBase64(std::string_view text) {
    const auto decoded =
        QByteArray::fromBase64Encoding(byteArray(text), QByteArray::AbortOnBase64DecodingErrors);
    if (text.size() % 4 != 0 || !decoded) {
        return std::nullopt;
    }
    return (*decoded).toStdString();
}

} // namespace mailserver
