#include "components/smtplib/message_source.h"

#include <utility>

namespace SMTPLib {

namespace {
bool hasEightBit(std::string_view text) {
    // To the end in any case: without a way out, many octets are looked at together.
    unsigned all = 0;
    for (const char octet : text) {
        all |= static_cast<unsigned char>(octet);
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
        totals.octets += static_cast<std::int64_t>(piece.size());
        totals.eightBit = totals.eightBit || hasEightBit(piece);
    }
    part_ = Part::Header;
    bodyUsed_ = 0;
    if (end == Part::File) {
        totals.octets += file_->size();
    }
    if (file_) {
        // The server will be told the size, and half of a file that somebody still writes is worth nothing.
        file_->rewind();
    }
    return totals;
}

bool MessageSource::next(std::string& piece) {
    piece.clear();
    // A piece of the file may be less than a line, and make no text yet.
    while (piece.empty() && part_ != Part::End) {
        if (part_ == Part::Header) {
            piece = header_;
            part_ = Part::Body;
        } else if (part_ == Part::Body) {
            const std::string_view text = body_.substr(bodyUsed_, kPieceOctets);
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
    buffer_.resize(kPieceOctets);
    const std::string_view octets = file_ ? file_->read(buffer_) : std::string_view();
    if (fileSizeIsKnown() && file_->bytesRead() < file_->size()) {
        // An encoder's lines are ready as they are; only the last one is looked at, which must have its end.
        piece.append(octets);
        return;
    }
    wire_.add(octets, piece);
    if (octets.empty()) {
        wire_.finish(piece);
        part_ = Part::End;
    }
}

} // namespace SMTPLib
