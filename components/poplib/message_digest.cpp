#include "components/poplib/message_digest.h"

#include "platform/text.h"

#include <QByteArrayView>

#include <algorithm>
#include <array>
#include <string_view>

namespace poplib {

namespace {
/** Header fields that servers with mbox files write themselves, in capitals. */
constexpr std::array<std::string_view, 7> kNotes{"STATUS", "X-STATUS",   "X-UID",     "X-UIDL",
                                                 "X-IMAP", "X-IMAPBASE", "X-KEYWORDS"};

bool isNoteField(std::string_view field) {
    // Most fields begin with another letter.
    const bool mayBe =
        !field.empty() && std::string_view("SsXx").find(field.front()) != std::string_view::npos;
    return mayBe && std::find(kNotes.begin(), kNotes.end(), platform::upperCase(field)) != kNotes.end();
}
} // namespace

/** Whether the line is one of the server's notes, whose bytes are counted then. */
bool MessageDigest::isNote(const HeaderLine& header) {
    const bool isFolded = header.field.empty() && header.separator.empty();
    if (!isFolded) {
        inNote_ = !header.separator.empty() && isNoteField(header.field);
    }
    // A line that was cut has more bytes than are here, so it counts as the sender's.
    inNote_ = inNote_ && !header.cut;
    if (inNote_) {
        constexpr std::size_t lineEnd = 2;
        bytesOfNotes_ += static_cast<std::int64_t>(header.field.size() + header.separator.size() +
                                                   header.value.size() + lineEnd);
    }
    return inNote_;
}

void MessageDigest::add(const Event& event) {
    constexpr std::size_t enough = 16U << 10U; // bytes
    if (const auto* header = std::get_if<HeaderLine>(&event)) {
        if (isNote(*header)) {
            return;
        }
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
