#include "message/composer.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

namespace {
std::string delimiterLine() {
    return "--" + std::string(MimeBoundary) + "\r\n";
}

/** The name as it stands between the quotes of a header line. */
std::string quotableName(const QString& attachment) {
    const QString name = attachmentFileName(attachment);
    for (const QChar forbidden : {u'"', u'\r', u'\n', u'\0'}) {
        if (name.contains(forbidden)) {
            throw platform::RuntimeError(platform::errors::BadFileName);
        }
    }
    return platform::toBytes(name);
}
} // namespace

QString attachmentFileName(QString path) {
    if (path.size() > 1 && path.at(1) == u':') {
        path.remove(0, 2);
    }
    return path.sliced(path.lastIndexOf(u'\\') + 1);
}

ComposedMessage Compose(std::string_view text, const QString& attachment, const EncodeAttachment& encode) {
    ComposedMessage message;
    if (attachment.isEmpty()) {
        message.MessageBody = text;
        return message;
    }
    const std::string boundary(MimeBoundary);
    const std::string name = quotableName(attachment);
    message.ExtraHeaders = "MIME-Version: 1.0\r\n"
                           "Content-Type: multipart/mixed; boundary=\"" +
                           boundary + "\"\r\n";
    message.MessageBody = "This is a multi-part message in MIME format.\r\n" + delimiterLine() +
                          "\r\n"
                          "Content-Type: text/plain;\r\n"
                          "\r\n" +
                          std::string(text) + "\r\n" + delimiterLine() +
                          "Content-Type: application/octet-stream; name=\"" + name +
                          "\"\r\n"
                          "Content-Transfer-Encoding: base64\r\n"
                          "\r\n";
    message.DataFile = encode(attachment, "--" + boundary + "--\r\n");
    return message;
}
