#pragma once

// Encoded words, read without the program's own code.

#include <QByteArray>
#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace support {

/** The words of a text, without the spaces and line ends between them. */
inline std::vector<std::string> wordsIn(std::string_view text) {
    std::vector<std::string> words;
    std::string word;
    for (const char character : std::string(text) + ' ') {
        const bool isSpace = character == ' ' || character == '\r' || character == '\n';
        if (!isSpace) {
            word += character;
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

/** The bytes of a text in the Q encoding of RFC 2047. */
inline QByteArray bytesOfQ(QByteArray text) {
    return QByteArray::fromPercentEncoding(text.replace('_', ' '), '=');
}

/** A text of nothing but encoded words in UTF-8, each decoded by itself; otherwise an empty text. */
inline QString decodedWords(std::string_view text) {
    QString decoded;
    for (const std::string& word : wordsIn(text)) {
        const QByteArray bytes = QByteArray::fromStdString(word);
        if (!bytes.startsWith("=?utf-8?") || !bytes.endsWith("?=") || bytes.size() < 12) {
            return {};
        }
        const QByteArray content = bytes.mid(10, bytes.size() - 12);
        decoded +=
            QString::fromUtf8(bytes.at(8) == 'B' ? QByteArray::fromBase64(content) : bytesOfQ(content));
    }
    return decoded;
}

} // namespace support
