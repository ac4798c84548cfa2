#include "mailserver/certificates.h"

#include "mailserver/openssl_handles.h"

#include <QFile>

#include <openssl/asn1.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <utility>

namespace mailserver {

namespace {

using ExtensionHandle = std::unique_ptr<X509_EXTENSION, OpensslDeleter<X509_EXTENSION_free>>;
using NamesHandle = std::unique_ptr<GENERAL_NAMES, OpensslDeleter<GENERAL_NAMES_free>>;

/** How long an authority is valid, before and after now: longer than any certificate that it signs. */
constexpr std::chrono::hours kAuthorityTime(24 * 365);

KeyHandle newKey() {
    return KeyHandle(openssl(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), "EVP_PKEY_Q_keygen"));
}

std::string textOf(BIO* bio) {
    char* text = nullptr;
    const long size = BIO_get_mem_data(bio, &text);
    return {text, static_cast<std::size_t>(size)};
}

BioHandle newText() {
    return BioHandle(openssl(BIO_new(BIO_s_mem()), "BIO_new"));
}

std::string pemOf(X509& certificate) {
    const BioHandle text = newText();
    openssl(PEM_write_bio_X509(text.get(), &certificate), "PEM_write_bio_X509");
    return textOf(text.get());
}

std::string pemOf(EVP_PKEY& key) {
    const BioHandle text = newText();
    openssl(PEM_write_bio_PrivateKey(text.get(), &key, nullptr, nullptr, 0, nullptr, nullptr),
            "PEM_write_bio_PrivateKey");
    return textOf(text.get());
}

/** A certificate for the key, so far without extensions, issuer and signature. */
X509Handle newCertificate(EVP_PKEY& key, const std::string& commonName, std::chrono::seconds notBefore,
                          std::chrono::seconds notAfter) {
    X509Handle certificate(openssl(X509_new(), "X509_new"));
    openssl(X509_set_version(certificate.get(), X509_VERSION_3), "X509_set_version");
    std::uint32_t serial = 0;
    openssl(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof(serial)), "RAND_bytes");
    openssl(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial),
            "ASN1_INTEGER_set_uint64");
    openssl(X509_gmtime_adj(X509_getm_notBefore(certificate.get()), notBefore.count()), "X509_gmtime_adj");
    openssl(X509_gmtime_adj(X509_getm_notAfter(certificate.get()), notAfter.count()), "X509_gmtime_adj");
    openssl(X509_set_pubkey(certificate.get(), &key), "X509_set_pubkey");
    openssl(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(commonName.data()),
                                       static_cast<int>(commonName.size()), -1, 0),
            "X509_NAME_add_entry_by_txt");
    return certificate;
}

/** Adds an extension in the words of OpenSSL's configuration. */
void extend(X509& certificate, X509& issuer, int extension, const char* value) {
    X509V3_CTX context{};
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    const ExtensionHandle made(
        openssl(X509V3_EXT_conf_nid(nullptr, &context, extension, value), "X509V3_EXT_conf_nid"));
    openssl(X509_add_ext(&certificate, made.get(), -1), "X509_add_ext");
}

void addName(GENERAL_NAMES& names, int type, const std::string& bytes) {
    std::unique_ptr<GENERAL_NAME, OpensslDeleter<GENERAL_NAME_free>> name(
        openssl(GENERAL_NAME_new(), "GENERAL_NAME_new"));
    ASN1_STRING* const text =
        openssl(ASN1_STRING_type_new(type == GEN_DNS ? V_ASN1_IA5STRING : V_ASN1_OCTET_STRING),
                "ASN1_STRING_type_new");
    GENERAL_NAME_set0_value(name.get(), type, text);
    openssl(ASN1_STRING_set(text, bytes.data(), static_cast<int>(bytes.size())), "ASN1_STRING_set");
    openssl(sk_GENERAL_NAME_push(&names, name.get()), "sk_GENERAL_NAME_push");
    // The list owns it from here on.
    static_cast<void>(name.release());
}

std::string bytesOfAddress(const std::string& address) {
    const std::unique_ptr<ASN1_OCTET_STRING, OpensslDeleter<ASN1_OCTET_STRING_free>> bytes(
        openssl(a2i_IPADDRESS(address.c_str()), "a2i_IPADDRESS"));
    return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(bytes.get())),
            static_cast<std::size_t>(ASN1_STRING_length(bytes.get()))};
}

/** The names as they are: the words of the configuration could not hold a comma or a NUL. */
void addAlternativeNames(X509& certificate, const CertificateDescription& description) {
    if (description.names.empty() && description.addresses.empty()) {
        return;
    }
    const NamesHandle names(openssl(sk_GENERAL_NAME_new_null(), "sk_GENERAL_NAME_new_null"));
    for (const std::string& name : description.names) {
        addName(*names, GEN_DNS, name);
    }
    for (const std::string& address : description.addresses) {
        addName(*names, GEN_IPADD, bytesOfAddress(address));
    }
    openssl(X509_add1_ext_i2d(&certificate, NID_subject_alt_name, names.get(), 0, X509V3_ADD_DEFAULT),
            "X509_add1_ext_i2d");
}

/** The description's certificate for the key, so far without issuer and signature. */
X509Handle describedCertificate(EVP_PKEY& key, const CertificateDescription& description) {
    X509Handle certificate =
        newCertificate(key, description.commonName, description.notBefore, description.notAfter);
    extend(*certificate, *certificate, NID_basic_constraints, "critical,CA:FALSE");
    extend(*certificate, *certificate, NID_key_usage, "critical,digitalSignature");
    extend(*certificate, *certificate, NID_ext_key_usage,
           description.purpose == Purpose::Server ? "serverAuth" : "clientAuth");
    addAlternativeNames(*certificate, description);
    return certificate;
}

/** Lets the issuer, which may be the certificate itself, sign with its key. */
void sign(X509& certificate, X509& issuer, EVP_PKEY& issuersKey, bool weakly = false) {
    openssl(X509_set_issuer_name(&certificate, X509_get_subject_name(&issuer)), "X509_set_issuer_name");
    extend(certificate, issuer, NID_subject_key_identifier, "hash");
    extend(certificate, issuer, NID_authority_key_identifier, "keyid:always");
    openssl(X509_sign(&certificate, &issuersKey, weakly ? EVP_sha1() : EVP_sha256()), "X509_sign");
}

void write(const std::filesystem::path& path, const std::string& text, QFileDevice::Permissions permissions) {
    QFile file(QString::fromStdString(path.string()));
    // A file that is there would keep its own permissions.
    file.remove();
    const auto size = static_cast<qint64>(text.size());
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, permissions) ||
        file.write(text.data(), size) != size || !file.flush()) {
        throw std::runtime_error("cannot write " + path.string() + ": " + file.errorString().toStdString());
    }
}

} // namespace

struct Authority::Signer {
    KeyHandle key;
    X509Handle certificate;
    std::string certificatePem;
    /** What whoever is signed here has to present besides: this authority and those above, but no root. */
    std::string chainPem;

    explicit Signer(const std::string& name)
        : key(newKey()), certificate(newCertificate(*key, name, -kAuthorityTime, kAuthorityTime)) {
        extend(*certificate, *certificate, NID_basic_constraints, "critical,CA:TRUE");
        extend(*certificate, *certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    }
};

Authority::Authority(const std::string& name) : signer_(std::make_unique<Signer>(name)) {
    sign(*signer_->certificate, *signer_->certificate, *signer_->key);
    signer_->certificatePem = pemOf(*signer_->certificate);
}

Authority::Authority(std::unique_ptr<Signer> signer) : signer_(std::move(signer)) {}

Authority::~Authority() = default;
Authority::Authority(Authority&&) noexcept = default;
Authority& Authority::operator=(Authority&&) noexcept = default;

const std::string& Authority::certificatePem() const {
    return signer_->certificatePem;
}

Authority Authority::intermediate(const std::string& name) const {
    auto signer = std::make_unique<Signer>(name);
    sign(*signer->certificate, *signer_->certificate, *signer_->key);
    signer->certificatePem = pemOf(*signer->certificate);
    signer->chainPem = signer->certificatePem + signer_->chainPem;
    return Authority(std::move(signer));
}

Certificate Authority::issue(const CertificateDescription& description) const {
    const KeyHandle key = newKey();
    const X509Handle certificate = describedCertificate(*key, description);
    sign(*certificate, *signer_->certificate, *signer_->key, description.weaklySigned);
    return {pemOf(*certificate), pemOf(*key), signer_->chainPem};
}

Certificate selfSigned(const CertificateDescription& description) {
    const KeyHandle key = newKey();
    const X509Handle certificate = describedCertificate(*key, description);
    sign(*certificate, *certificate, *key, description.weaklySigned);
    return {pemOf(*certificate), pemOf(*key), {}};
}

CertificateFiles writeTo(const std::filesystem::path& folder, const std::string& name,
                         const Certificate& certificate) {
    CertificateFiles files{folder / (name + ".pem"), folder / (name + ".key")};
    constexpr QFileDevice::Permissions owners = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    write(files.chain, certificate.chainPem(), owners | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    write(files.key, certificate.keyPem, owners);
    return files;
}

} // namespace mailserver
