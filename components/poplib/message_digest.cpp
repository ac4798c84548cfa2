#include "components/poplib/message_digest.h"

#include <QByteArrayView>

namespace poplib {

void MessageDigest::add(const Event& event) {
    constexpr std::size_t enough = 16U << 10U; // bytes
    if (const auto* header = std::get_if<HeaderLine>(&event)) {
        add(header->field);
        add(":");
        add(header->value);
    } else if (const auto* body = std::get_if<BodyLine>(&event)) {
        // The empty line between header and body.
        add(inBody_ ? "" : "\n");
        inBody_ = true;
        add(body->text);
    } else {
        return;
    }
    add("\n");
    if (gathered_.size() >= enough) {
        digestGathered();
    }
}

std::string MessageDigest::result() {
    digestGathered();
    return hash_.result().toStdString();
}

void MessageDigest::digestGathered() {
    hash_.addData(QByteArrayView(gathered_.data(), static_cast<qsizetype>(gathered_.size())));
    gathered_.clear();
}

} // namespace poplib
