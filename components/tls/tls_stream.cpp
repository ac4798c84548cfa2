// Encrypted streams. They are a library of their own, loaded at the first encrypted connection with the whole
// of TLS.

#include "components/network/socket_stream.h"
#include "components/tls/certificate_faults.h"
#include "components/tls/tickets.h"

#include <QFile>
#include <QSslConfiguration>
#include <QSslSocket>

#include <algorithm>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {
using transport::Outcome;
using transport::ServerName;
using transport::TlsStream;

/** The name to verify and to ask for (SNI). A dot at the end of a host name is not part of it. */
QString nameToVerify(const ServerName& server) {
    return server.host.endsWith(u'.') ? server.host.chopped(1) : server.host;
}

QSslConfiguration configurationFor(const ServerName& server) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    // Tickets: the next session with this server begins in fewer round trips.
    configuration.setSslOption(QSsl::SslOptionDisableSessionPersistence, false);
    configuration.setSessionTicket(tls::ticketFor(server));
    if (!mustBeProven(server.security)) {
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        return configuration;
    }
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    // OpenSSL's own variable for another bundle of roots, which Qt does not look at.
    if (const QString bundle = qEnvironmentVariable("SSL_CERT_FILE"); !bundle.isEmpty()) {
        configuration.addCaCertificates(QSslCertificate::fromPath(bundle));
    }
    return configuration;
}

/** The first of the texts that is not empty. */
QString firstOf(const QStringList& texts) {
    const auto found =
        std::find_if(texts.begin(), texts.end(), [](const QString& text) { return !text.isEmpty(); });
    return found == texts.end() ? QString() : *found;
}

transport::Certificate described(const QSslCertificate& certificate, const QList<QSslError>& errors) {
    transport::Certificate facts;
    facts.names = certificate.subjectAlternativeNames().values();
    facts.subject = firstOf(certificate.subjectInfo(QSslCertificate::CommonName) +
                            certificate.subjectInfo(QSslCertificate::Organization) + facts.names);
    facts.issuer = firstOf(certificate.issuerInfo(QSslCertificate::CommonName) +
                           certificate.issuerInfo(QSslCertificate::Organization));
    facts.validFrom = certificate.effectiveDate();
    facts.validUntil = certificate.expiryDate();
    for (const QSslError& error : errors) {
        if (error.error() != QSslError::NoError && !facts.faults.contains(error.errorString())) {
            facts.faults.append(error.errorString());
        }
    }
    return facts;
}

class EncryptedStream : public network::SocketStream<TlsStream, QSslSocket> {
  public:
    EncryptedStream() {
        QObject::connect(socket(), &QSslSocket::sslErrors,
                         [this](const QList<QSslError>& errors) { findFault(errors); });
        QObject::connect(socket(), &QSslSocket::encrypted, [this] { handshakeEnded(); });
        QObject::connect(socket(), &QSslSocket::newSessionTicketReceived, [this] { keepTicket(); });
        QObject::connect(socket(), &QSslSocket::encryptedBytesWritten, [this] { tell(); });
        QObject::connect(socket(), &QSslSocket::connected, [this] { connected_ = true; });
        QObject::connect(socket(), &QSslSocket::errorOccurred,
                         [this](QAbstractSocket::SocketError error) { breakOff(error); });
    }

    void open(const ServerName& server) override {
        prepare(server);
        socket()->connectToHostEncrypted(server.host, server.port, nameToVerify(server));
    }

    void encrypt(int descriptor, const ServerName& server) override {
        prepare(server);
        connected_ = true;
        socket()->setPeerVerifyName(nameToVerify(server));
        if (!socket()->setSocketDescriptor(descriptor)) {
            ::close(descriptor);
            return;
        }
        acknowledgeAtOnce();
        socket()->startClientEncryption();
    }

    State state() const override {
        if (isBroken_ || socket() == nullptr || socket()->state() == QAbstractSocket::UnconnectedState) {
            return State::Closed;
        }
        return isReady_ ? State::Open : State::Opening;
    }

    Outcome failure() const override {
        if (!connected_) {
            return SocketStream::failure();
        }
        return fault_ == Outcome::Done ? Outcome::HandshakeFailed : fault_;
    }

    long long bytesAvailable() const override { return isReady_ ? SocketStream::bytesAvailable() : 0; }

    long long unsentBytes() const override {
        return socket() == nullptr ? 0 : socket()->bytesToWrite() + socket()->encryptedBytesToWrite();
    }

    QString version() const override {
        if (!isReady_ || socket() == nullptr) {
            return {};
        }
        switch (socket()->sessionProtocol()) {
        case QSsl::TlsV1_2:
            return QStringLiteral("TLS 1.2");
        case QSsl::TlsV1_3:
            return QStringLiteral("TLS 1.3");
        default:
            return QStringLiteral("TLS");
        }
    }

    std::optional<transport::Certificate> certificate() const override {
        return presented_.isNull() ? std::nullopt : std::optional(described(presented_, errors_));
    }

  private:
    void prepare(const ServerName& server) {
        server_ = server;
        socket()->setSslConfiguration(configurationFor(server));
    }

    void findFault(const QList<QSslError>& errors) {
        presented_ = socket()->peerCertificate();
        errors_.append(errors);
        // Qt tells of another name even where nothing is to be verified.
        if (!mustBeProven(server_.security)) {
            return;
        }
        fault_ = tls::faultOf(errors, socket()->peerCertificate(), nameToVerify(server_));
    }

    void handshakeEnded() {
        // Qt takes names that a stricter reading does not take.
        findFault({});
        if (fault_ != Outcome::Done) {
            socket()->abort();
        } else {
            isReady_ = true;
            keepTicket();
        }
        tell();
    }

    /** Qt leaves a connection open that has ceased to be TLS. What came before can still be read. */
    void breakOff(QAbstractSocket::SocketError error) {
        if (isReady_ && error != QAbstractSocket::RemoteHostClosedError) {
            isBroken_ = true;
            tell();
        }
    }

    /** A server may give tickets out with the handshake (TLS 1.2) or at any time after it (TLS 1.3). */
    void keepTicket() {
        if (isReady_) {
            tls::keepTicket(server_, socket()->sslConfiguration().sessionTicket());
        }
    }

    ServerName server_;
    /** The server has taken the connection, so that what fails now is the encryption. */
    bool connected_ = false;
    bool isReady_ = false;
    /** An error has ended the encryption once it stood. */
    bool isBroken_ = false;
    /** What is wrong with the certificate; Done for nothing. */
    Outcome fault_ = Outcome::Done;
    QSslCertificate presented_;
    QList<QSslError> errors_;
};
} // namespace

extern "C" __attribute__((visibility("default"))) TlsStream* brindlewakeMakeTlsStream() {
    return std::make_unique<EncryptedStream>().release();
}

extern "C" __attribute__((visibility("default"))) void brindlewakeTlsLibraryVersion(QString& version) {
    version = QSslSocket::sslLibraryVersionString();
}
