#include "components/tls/certificate_faults.h"

#include <QHostAddress>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace tls {

using transport::Outcome;

namespace {
bool isFor(const QSslCertificate& certificate, const QString& host) {
    const QByteArray der = certificate.toDer();
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.constData());
    const std::unique_ptr<X509, decltype(&X509_free)> parsed(
        d2i_X509(nullptr, &bytes, static_cast<long>(der.size())), X509_free);
    if (!parsed) {
        return false;
    }
    if (!QHostAddress(host).isNull()) {
        return X509_check_ip_asc(parsed.get(), host.toLatin1().constData(), 0) == 1;
    }
    const QByteArray name = QUrl::toAce(host);
    return !name.isEmpty() &&
           X509_check_host(parsed.get(), name.constData(), static_cast<std::size_t>(name.size()),
                           X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS, nullptr) == 1;
}

bool isAboutTime(const QSslError& error) {
    switch (error.error()) {
    case QSslError::CertificateExpired:
    case QSslError::CertificateNotYetValid:
    case QSslError::InvalidNotBeforeField:
    case QSslError::InvalidNotAfterField:
        return true;
    default:
        return false;
    }
}

bool isAboutTrust(const QSslError& error) {
    return !isAboutTime(error) && error.error() != QSslError::HostNameMismatch &&
           error.error() != QSslError::NoError;
}
} // namespace

Outcome faultOf(const QList<QSslError>& errors, const QSslCertificate& certificate, const QString& host) {
    if (certificate.isNull() || std::any_of(errors.begin(), errors.end(), isAboutTrust)) {
        return Outcome::IssuerNotTrusted;
    }
    const bool otherName = std::any_of(errors.begin(), errors.end(), [](const QSslError& error) {
        return error.error() == QSslError::HostNameMismatch;
    });
    if (otherName || !isFor(certificate, host)) {
        return Outcome::OtherName;
    }
    return std::any_of(errors.begin(), errors.end(), isAboutTime) ? Outcome::NotValidNow : Outcome::Done;
}

} // namespace tls
