#include "demo/encryption.h"

#include "mailserver/certificates.h"

#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

#include <fstream>
#include <stdexcept>

namespace demo {

QSslConfiguration newIdentity(const std::filesystem::path& rootCertificate) {
    if (!QSslSocket::supportsSsl()) {
        throw std::runtime_error("Qt's TLS is missing: no encryption");
    }
    const mailserver::Authority root("Root of the demo server");
    mailserver::CertificateDescription description;
    description.names = {"localhost"};
    description.addresses = {"127.0.0.1", "::1"};
    description.commonName = "The demo server";
    description.notAfter = std::chrono::hours(24 * 7);
    const mailserver::Certificate certificate = root.issue(description);
    if (!rootCertificate.empty()) {
        std::ofstream file(rootCertificate, std::ios::binary | std::ios::trunc);
        if (!(file << root.certificatePem() << std::flush)) {
            throw std::runtime_error("cannot write " + rootCertificate.string());
        }
    }
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(QByteArray::fromStdString(certificate.certificatePem)));
    configuration.setPrivateKey(QSslKey(QByteArray::fromStdString(certificate.keyPem), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

std::vector<std::string> mechanisms() {
    return {"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN"};
}

} // namespace demo
