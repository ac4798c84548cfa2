#include "components/smtplib/message_source.h"

#include <utility>

namespace smtplib {

namespace {
bool hasEightBit(std::string_view text) {
    // No early return: without one, the compiled loop checks many bytes at once.
    unsigned all = 0;
    for (const char byte : text) {
        all |= static_cast<unsigned char>(byte);
    }
    return all >= 0x80U;
}
} // namespace

MessageSource::MessageSource(std::string_view header, std::string_view body,
                             std::optional<platform::RegularInput> dataFile)
    : header_(header), body_(body), file_(std::move(dataFile)) {}

MessageTotals MessageSource::measure() {
    MessageTotals totals;
    const Part end = fileSizeIsKnown() ? Part::File : Part::End;
    for (std::string piece; part_ != end && next(piece);) {
        totals.bytes += static_cast<std::int64_t>(piece.size());
        totals.eightBit = totals.eightBit || hasEightBit(piece);
    }
    part_ = Part::Header;
    bodyUsed_ = 0;
    if (end == Part::File) {
        totals.bytes += file_->size();
    }
    if (file_) {
        // Raises an error when another program is still writing the file: MAIL announces its size, and a part
        // of it is of no use.
        file_->rewind();
    }
    return totals;
}

bool MessageSource::next(std::string& piece) {
    piece.clear();
    // A piece of the file may be less than a line and give no text yet.
    while (piece.empty() && part_ != Part::End) {
        if (part_ == Part::Header) {
            piece = header_;
            part_ = Part::Body;
        } else if (part_ == Part::Body) {
            const std::string_view text = body_.substr(bodyUsed_, kPieceBytes);
            wire_.add(text, piece);
            bodyUsed_ += text.size();
            part_ = bodyUsed_ < body_.size() ? Part::Body : Part::File;
        } else {
            readFile(piece);
        }
    }
    return !piece.empty();
}

void MessageSource::readFile(std::string& piece) {
    buffer_.resize(kPieceBytes);
    const std::string_view bytes = file_ ? file_->read(buffer_) : std::string_view();
    if (fileSizeIsKnown() && file_->bytesRead() < file_->size()) {
        // An encoder's lines are ready as they are. Only the last piece is checked, for the end of its last
        // line.
        piece.append(bytes);
        return;
    }
    wire_.add(bytes, piece);
    if (bytes.empty()) {
        wire_.finish(piece);
        part_ = Part::End;
    }
}

} // namespace smtplib
