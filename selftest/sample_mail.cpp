#include "selftest/sample_mail.h"

#include <QByteArray>

namespace selftest {

namespace {
std::string header(const char* subject) {
    return "From: Ann <ann@example.org>\r\n"
           "To: member@example.org\r\n"
           "Subject: " +
           std::string(subject) +
           "\r\n"
           "Date: Sun, 22 Nov 2026 12:00:00 +0000\r\n"
           "MIME-Version: 1.0\r\n";
}

std::string inBase64Lines(const std::string& bytes) {
    constexpr qsizetype lineLength = 76;
    const QByteArray encoded = QByteArray::fromStdString(bytes).toBase64();
    std::string lines;
    for (qsizetype begin = 0; begin < encoded.size(); begin += lineLength) {
        lines += encoded.mid(begin, lineLength).toStdString() + "\r\n";
    }
    return lines;
}

std::string messageWithAttachment() {
    const std::string name = '"' + std::string(kAttachmentName) + '"';
    return header(kAttachmentSubject) +
           "Content-Type: multipart/mixed; boundary=\"=_self_test\"\r\n"
           "\r\n"
           "--=_self_test\r\n"
           "Content-Type: text/plain; charset=utf-8\r\n"
           "Content-Transfer-Encoding: 8bit\r\n"
           "\r\n" +
           kText +
           "\r\n"
           "\r\n"
           "--=_self_test\r\n"
           "Content-Type: application/octet-stream; name=" +
           name +
           "\r\n"
           "Content-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment; filename=" +
           name + "\r\n\r\n" + inBase64Lines(attachmentBytes()) + "--=_self_test--\r\n";
}
} // namespace

std::string attachmentBytes() {
    constexpr int count = 5000;
    std::string bytes;
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(i * 7 + i / 256);
    }
    return bytes;
}

std::vector<std::string> waitingMessages() {
    const std::string text = header(kTextSubject) +
                             "Content-Type: text/plain; charset=utf-8\r\n"
                             "\r\n" +
                             kText + "\r\n";
    return {text, messageWithAttachment()};
}

} // namespace selftest
