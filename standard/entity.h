#pragma once

#include "message/standard_reader.h"
#include "standard/header_fields.h"
#include "standard/parameters.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standard {

/** A message or a part of one: its header and its content (RFC 2045 section 2.4). Refers to its bytes. */
class Entity {
  public:
    /**
     * Reads a part, header and all.
     * \param defaultType The type of a part that names none: text/plain, and in a digest message/rfc822.
     */
    Entity(std::string_view bytes, const std::string& defaultType);

    /** A whole message, whose header has been read. */
    Entity(const HeaderFields& header, std::string_view body);

    /** The type in lower case, as text/plain: the default one where the header has none, or half of one. */
    const std::string& type() const noexcept { return type_; }

    bool isOfKind(std::string_view kind) const {
        return type_.starts_with(kind) && type_[kind.size()] == '/';
    }

    const StructuredField& typeField() const noexcept { return typeField_; }

    /** Whether it is to be kept apart from the text (RFC 2183); a disposition that nobody knows means that.
     */
    bool isAttached() const;

    /** The name that it is to be saved under: decoded, without folders as it stands; empty for none. */
    std::string name() const;

    TransferEncoding encoding() const noexcept { return encoding_; }

    /** The content as it stands in the message. */
    std::string_view content() const noexcept { return content_; }

    /** The root of a multipart/related by its Content-ID, without brackets. */
    const std::string& contentId() const noexcept { return contentId_; }

  private:
    void read(const HeaderFields& header, const std::string& defaultType);

    std::string type_;
    StructuredField typeField_;
    StructuredField disposition_;
    TransferEncoding encoding_ = TransferEncoding::None;
    std::string contentId_;
    std::string_view content_;
};

/**
 * The parts of a multipart (RFC 2046 section 5.1.1), up to `most`: the last one then has the rest. A boundary
 * line may have blanks at its end. Where the boundary is missing or stands nowhere, the first line counts
 * that begins with two hyphens and has a field of a part's header behind it. Empty when there is no boundary
 * at all.
 */
std::vector<std::string_view> partsOf(const Entity& multipart, std::size_t most);

} // namespace standard
