#pragma once

#include <QByteArray>
#include <QCryptographicHash>

#include <string>
#include <string_view>

namespace support {

/** What a server's first message says, besides the client's nonce. */
struct ScramTerms {
    std::string serverNonce = "3rfcNHYJY1ZVvWVs7j";
    std::string salt = "sixteen octets..";
    int iterations = 4096;
    /** What is behind the number of iterations, from a comma on. */
    std::string extensions{};
};

/**
 * The server's side of SCRAM, written from RFC 5802 section 3 with Qt's hashes and nothing of the library
 * that is tested with it. The password has to be prepared by SASLprep already.
 */
class ScramServer {
  public:
    ScramServer(QCryptographicHash::Algorithm hash, std::string_view password, ScramTerms terms);

    /** The answer to the client's first message. */
    std::string firstMessage(std::string_view clientFirst);

    /** The answer to the client's final message: the signature, or an error where the client's proof is
     * wrong. */
    std::string finalMessage(std::string_view clientFinal) const;

    /** The server's signature, whatever the client's proof is. */
    std::string signature(std::string_view clientFinal) const;

    /** The user name as the client has written it, with =2C and =3D. */
    const std::string& writtenUser() const { return writtenUser_; }

  private:
    /** What is signed, the client's final message without its proof included. */
    std::string signedText(std::string_view clientFinal) const;
    QByteArray hmac(const QByteArray& key, std::string_view text) const;
    QByteArray hashed(const QByteArray& bytes) const;

    QCryptographicHash::Algorithm hash_;
    ScramTerms terms_;
    QByteArray saltedPassword_;
    std::string writtenUser_;
    std::string messagesSoFar_;
};

} // namespace support
