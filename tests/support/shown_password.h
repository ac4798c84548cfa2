#pragma once

#include <QByteArray>

#include <sstream>
#include <string>
#include <string_view>

namespace support {

/** Whether the password can be read in what has crossed a network: as it is, or in the base64 of AUTH. */
inline bool showsPassword(const std::string& bytes, std::string_view password) {
    std::istringstream words(bytes);
    for (std::string word; words >> word;) {
        const std::string decoded = QByteArray::fromBase64(QByteArray::fromStdString(word)).toStdString();
        if (decoded.find(password) != std::string::npos) {
            return true;
        }
    }
    return bytes.find(password) != std::string::npos;
}

} // namespace support
