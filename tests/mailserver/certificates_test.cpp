#include "mailserver/certificates.h"
#include "mailserver/openssl_handles.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <openssl/pem.h>
#include <openssl/x509_vfy.h>
#include <string>
#include <vector>

namespace {

using mailserver::Authority;
using mailserver::Certificate;
using mailserver::CertificateDescription;
using mailserver::OpensslDeleter;
using mailserver::Purpose;
using mailserver::X509Handle;
using std::chrono::hours;

X509Handle firstOf(const std::string& pem) {
    const mailserver::BioHandle text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return X509Handle(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr));
}

/** What OpenSSL says of the certificate, as a server's, to a client that trusts only this root. */
int verdict(const Certificate& certificate, const std::string& rootPem) {
    const std::unique_ptr<X509_STORE, OpensslDeleter<X509_STORE_free>> trusted(X509_STORE_new());
    X509_STORE_add_cert(trusted.get(), firstOf(rootPem).get());
    const X509Handle intermediate = firstOf(certificate.intermediatesPem);
    STACK_OF(X509)* const between = sk_X509_new_null();
    if (intermediate) {
        sk_X509_push(between, intermediate.get());
    }
    const X509Handle leaf = firstOf(certificate.certificatePem);
    const std::unique_ptr<X509_STORE_CTX, OpensslDeleter<X509_STORE_CTX_free>> check(X509_STORE_CTX_new());
    X509_STORE_CTX_init(check.get(), trusted.get(), leaf.get(), between);
    X509_STORE_CTX_set_purpose(check.get(), X509_PURPOSE_SSL_SERVER);
    X509_verify_cert(check.get());
    sk_X509_free(between);
    return X509_STORE_CTX_get_error(check.get());
}

bool isFor(const Certificate& certificate, const std::string& host) {
    const X509Handle leaf = firstOf(certificate.certificatePem);
    return X509_check_host(leaf.get(), host.data(), host.size(), X509_CHECK_FLAG_NEVER_CHECK_SUBJECT,
                           nullptr) == 1;
}

bool isForAddress(const Certificate& certificate, const char* address) {
    return X509_check_ip_asc(firstOf(certificate.certificatePem).get(), address, 0) == 1;
}

class Certificates : public testing::Test {
  protected:
    Certificate named(std::vector<std::string> names) const {
        CertificateDescription description;
        description.names = std::move(names);
        return root.issue(description);
    }

    int verdictOn(const CertificateDescription& description) const {
        return verdict(root.issue(description), root.certificatePem());
    }

    Authority root{"A root"};
};

TEST_F(Certificates, OneForANameIsValidForThatNameOnly) {
    const Certificate certificate = named({"mail.example.org", "pop.example.org"});
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_OK);
    EXPECT_TRUE(isFor(certificate, "mail.example.org"));
    EXPECT_TRUE(isFor(certificate, "POP.example.org"));
    EXPECT_FALSE(isFor(certificate, "smtp.example.org"));
    EXPECT_FALSE(isFor(certificate, "example.org"));
}

TEST_F(Certificates, OneForAddressesIsValidForThese) {
    CertificateDescription description;
    description.addresses = {"127.0.0.1", "::1"};
    const Certificate certificate = root.issue(description);
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_OK);
    EXPECT_TRUE(isForAddress(certificate, "127.0.0.1"));
    EXPECT_TRUE(isForAddress(certificate, "::1"));
    EXPECT_FALSE(isForAddress(certificate, "127.0.0.2"));
    EXPECT_FALSE(isFor(certificate, "127.0.0.1"));
}

TEST_F(Certificates, AnAddressCanBeWrittenAsTheNameOfAHost) {
    const Certificate certificate = named({"127.0.0.1"});
    EXPECT_FALSE(isForAddress(certificate, "127.0.0.1"));
    EXPECT_TRUE(isFor(certificate, "127.0.0.1")) << "whoever asks for a host's name of this form";
}

TEST_F(Certificates, TheCommonNameIsNoNameOfAHost) {
    CertificateDescription description;
    description.commonName = "mail.example.org";
    const Certificate certificate = root.issue(description);
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_OK);
    EXPECT_FALSE(isFor(certificate, "mail.example.org"));
    const X509Handle leaf = firstOf(certificate.certificatePem);
    EXPECT_EQ(X509_check_host(leaf.get(), "mail.example.org", 0, 0, nullptr), 1);
}

TEST_F(Certificates, AWildcardStandsForOneLevel) {
    EXPECT_TRUE(isFor(named({"*.example.org"}), "mail.example.org"));
    EXPECT_FALSE(isFor(named({"*.example.org"}), "pop.mail.example.org"));
    EXPECT_FALSE(isFor(named({"*.example.org"}), "example.org"));
    EXPECT_FALSE(isFor(named({"*.*.example.org"}), "pop.mail.example.org"));
}

TEST_F(Certificates, ANameCanHaveANulInside) {
    const std::string name("mail.example.org\0.example.com", 29);
    const Certificate certificate = named({name});
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_OK);
    EXPECT_FALSE(isFor(certificate, "mail.example.org"));
    const X509Handle leaf = firstOf(certificate.certificatePem);
    const std::unique_ptr<GENERAL_NAMES, OpensslDeleter<GENERAL_NAMES_free>> names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(leaf.get(), NID_subject_alt_name, nullptr, nullptr)));
    ASSERT_NE(names, nullptr);
    const ASN1_STRING* const text = sk_GENERAL_NAME_value(names.get(), 0)->d.dNSName;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
                          static_cast<std::size_t>(ASN1_STRING_length(text))),
              name);
}

TEST_F(Certificates, OneCanBeExpiredOrNotYetValid) {
    CertificateDescription expired;
    expired.notBefore = -hours(48);
    expired.notAfter = -hours(24);
    EXPECT_EQ(verdictOn(expired), X509_V_ERR_CERT_HAS_EXPIRED);
    CertificateDescription early;
    early.notBefore = hours(24);
    early.notAfter = hours(48);
    EXPECT_EQ(verdictOn(early), X509_V_ERR_CERT_NOT_YET_VALID);
}

TEST_F(Certificates, OneCanBeForClientsOnly) {
    CertificateDescription description;
    description.purpose = Purpose::Client;
    EXPECT_EQ(verdictOn(description), X509_V_ERR_INVALID_PURPOSE);
}

TEST_F(Certificates, WhatHasSignedItselfIsTrustedByNobody) {
    EXPECT_EQ(verdict(mailserver::selfSigned({}), root.certificatePem()),
              X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT);
}

TEST_F(Certificates, OneOfAnotherRootIsNotTrusted) {
    const Authority other("A root");
    EXPECT_EQ(verdict(other.issue({}), root.certificatePem()), X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
}

TEST_F(Certificates, AnIntermediateMustBePresented) {
    Certificate certificate = root.intermediate("Between").issue({});
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_OK);
    EXPECT_EQ(certificate.chainPem(), certificate.certificatePem + certificate.intermediatesPem);
    certificate.intermediatesPem.clear();
    EXPECT_EQ(verdict(certificate, root.certificatePem()), X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
}

TEST_F(Certificates, AFurtherIntermediateBringsAllAboveItButTheRoot) {
    const Authority upper = root.intermediate("Upper");
    const Authority lower = upper.intermediate("Lower");
    EXPECT_EQ(lower.issue({}).intermediatesPem, lower.certificatePem() + upper.certificatePem());
    EXPECT_EQ(root.issue({}).intermediatesPem, "");
}

TEST_F(Certificates, AnAddressThatIsNoneIsRefused) {
    CertificateDescription description;
    description.addresses = {"mail.example.org"};
    EXPECT_THROW(root.issue(description), std::runtime_error);
}

TEST_F(Certificates, OnlyItsOwnerCanReadAKeyThatWasWritten) {
    const support::TemporaryFolder folder;
    folder.write("mail.key", "an old key that everybody can read");
    const Certificate certificate = root.intermediate("Between").issue({});
    const mailserver::CertificateFiles files = mailserver::writeTo(folder.path(), "mail", certificate);
    EXPECT_EQ(files.chain, folder.path("mail.pem"));
    EXPECT_EQ(files.key, folder.path("mail.key"));
    EXPECT_EQ(folder.read("mail.pem"), certificate.chainPem());
    EXPECT_EQ(folder.read("mail.key"), certificate.keyPem);
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(files.key).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_THROW(mailserver::writeTo(folder.path("missing"), "mail", certificate), std::runtime_error);
}

} // namespace
