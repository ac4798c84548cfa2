#include "components/sasl/base64.h"

#include <QByteArray>

namespace sasl {

std::string toBase64(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))
        .toBase64()
        .toStdString();
}

std::optional<std::string> fromBase64(std::string_view text) {
    const QByteArray letters = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    const auto result = QByteArray::fromBase64Encoding(letters, QByteArray::AbortOnBase64DecodingErrors);
    // Qt does without the padding, and ignores the bits that the last letter has too many.
    if (!result || result.decoded.toBase64() != letters) {
        return std::nullopt;
    }
    return result.decoded.toStdString();
}

} // namespace sasl
