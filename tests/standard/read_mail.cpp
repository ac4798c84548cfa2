#include "tests/standard/read_mail.h"

namespace support {

std::vector<std::string> ReadMail::attachments() const {
    std::vector<std::string> names;
    for (const StandardAttachment& attachment : message.attachments) {
        names.push_back(attachment.name + " (" + std::to_string(attachment.bytes) + " bytes)");
    }
    return names;
}

std::string ReadMail::bytesOf(std::size_t index) const {
    std::string bytes;
    standardReader().decode(message.attachments.at(index),
                            [&bytes](std::string_view piece) { bytes += piece; });
    return bytes;
}

ReadMail readMail(std::string_view message) {
    ReadMail mail;
    bool inBody = false;
    while (!message.empty()) {
        const std::size_t end = message.find('\n');
        std::string_view line = message.substr(0, end);
        message.remove_prefix(end == std::string_view::npos ? message.size() : end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!inBody && line.empty()) {
            inBody = true;
            continue;
        }
        (inBody ? mail.body : mail.header).append(line).append("\r\n");
    }
    mail.message = standardReader().read(mail.header, mail.body);
    return mail;
}

} // namespace support
