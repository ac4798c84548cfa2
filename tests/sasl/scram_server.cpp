#include "tests/sasl/scram_server.h"

#include <QMessageAuthenticationCode>

#include <utility>

namespace support {

namespace {
constexpr std::string_view kProof = ",p=";

QByteArray bytesOf(std::string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

QByteArray exclusiveOr(QByteArray one, const QByteArray& other) {
    for (qsizetype index = 0; index < one.size(); ++index) {
        one[index] = static_cast<char>(one.at(index) ^ other.at(index));
    }
    return one;
}

/** The function Hi(password, salt, i). */
QByteArray salted(QCryptographicHash::Algorithm hash, std::string_view password, const ScramTerms& terms) {
    QMessageAuthenticationCode code(hash, bytesOf(password));
    code.addData(bytesOf(terms.salt));
    code.addData(QByteArray("\0\0\0\1", 4));
    QByteArray last = code.result();
    QByteArray all = last;
    for (int iteration = 1; iteration < terms.iterations; ++iteration) {
        code.reset();
        code.addData(last);
        last = code.result();
        all = exclusiveOr(all, last);
    }
    return all;
}
} // namespace

ScramServer::ScramServer(QCryptographicHash::Algorithm hash, std::string_view password, ScramTerms terms)
    : hash_(hash), terms_(std::move(terms)), saltedPassword_(salted(hash, password, terms_)) {}

std::string ScramServer::firstMessage(std::string_view clientFirst) {
    const std::string_view bare = clientFirst.substr(std::string_view("n,,").size());
    const std::size_t comma = bare.find(',');
    writtenUser_ = bare.substr(2, comma - 2);
    const std::string clientNonce(bare.substr(comma + 3));
    std::string first = "r=" + clientNonce + terms_.serverNonce +
                        ",s=" + bytesOf(terms_.salt).toBase64().toStdString() +
                        ",i=" + std::to_string(terms_.iterations) + terms_.extensions;
    messagesSoFar_ = std::string(bare) + "," + first;
    return first;
}

std::string ScramServer::finalMessage(std::string_view clientFinal) const {
    const QByteArray proof =
        QByteArray::fromBase64(bytesOf(clientFinal.substr(clientFinal.rfind(kProof) + kProof.size())));
    const QByteArray clientKey = hmac(saltedPassword_, "Client Key");
    const QByteArray expected = exclusiveOr(clientKey, hmac(hashed(clientKey), signedText(clientFinal)));
    return proof == expected ? signature(clientFinal) : "e=invalid-proof";
}

std::string ScramServer::signature(std::string_view clientFinal) const {
    const QByteArray serverKey = hmac(saltedPassword_, "Server Key");
    return "v=" + hmac(serverKey, signedText(clientFinal)).toBase64().toStdString();
}

std::string ScramServer::signedText(std::string_view clientFinal) const {
    return messagesSoFar_ + "," + std::string(clientFinal.substr(0, clientFinal.rfind(kProof)));
}

QByteArray ScramServer::hmac(const QByteArray& key, std::string_view text) const {
    return QMessageAuthenticationCode::hash(bytesOf(text), key, hash_);
}

QByteArray ScramServer::hashed(const QByteArray& bytes) const {
    return QCryptographicHash::hash(bytes, hash_);
}

} // namespace support
