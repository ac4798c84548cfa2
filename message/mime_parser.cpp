#include "message/mime_parser.h"

#include "message/part_headers.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {
using platform::inStr;
using platform::mid;

std::int64_t asSigned(std::size_t position) {
    return static_cast<std::int64_t>(position);
}

/** Takes one part after the other from a body, the text between one boundary and the next. */
class Parts {
  public:
    Parts(std::string_view body, std::string_view boundary) : rest_(body), boundary_(boundary) {}

    std::optional<std::string_view> next() {
        const std::size_t start = inStr(1, rest_, boundary_) + boundary_.size();
        const std::size_t end = inStr(start, rest_, boundary_);
        if (end == 0) {
            return std::nullopt;
        }
        const std::string_view part = mid(rest_, asSigned(start), asSigned(end) - asSigned(start));
        rest_.remove_prefix(end - 1);
        return part;
    }

  private:
    std::string_view rest_;
    std::string_view boundary_;
};

/**
 * A part's type, and where its Content-Type line starts. A part without such a line keeps the type of the
 * part before.
 */
struct PartType {
    std::string_view type;
    /** 1-based; 0 when the part has no such line. */
    std::size_t lineAt = 0;

    void read(std::string_view part) {
        constexpr std::size_t nameAndSpace = 14;
        lineAt = inStr(1, part, "Content-Type:");
        if (lineAt != 0) {
            const std::size_t semicolon = inStr(lineAt, part, ";");
            const std::size_t start = lineAt + nameAndSpace;
            type = mid(part, asSigned(start), asSigned(semicolon) - asSigned(start));
        }
    }

    /** The part from its Content-Type line on. \throws RuntimeError 5 when it has none. */
    std::string_view cut(std::string_view part) const {
        return mid(part, asSigned(lineAt), asSigned(part.size()));
    }
};

/** The text between the first quote at or after the position and the next quote. \throws RuntimeError 5 */
std::string_view quoted(std::string_view text, std::size_t from) {
    const std::size_t opening = from == 0 ? 0 : inStr(from, text, "\"");
    if (opening == 0) {
        throw platform::RuntimeError(platform::errors::InvalidProcedureCall);
    }
    const std::size_t closing = inStr(opening + 1, text, "\"");
    return mid(text, asSigned(opening) + 1, asSigned(closing) - asSigned(opening) - 1);
}

void stripTwice(StrippedText& text) {
    text.strip();
    text.strip();
}

bool isAttachment(std::string_view type) {
    return type.starts_with("application") || type.starts_with("audio") || type.starts_with("video") ||
           type.starts_with("image");
}

/** The last plain text among the alternatives replaces all text so far. */
void takeAlternative(std::string_view part, StrippedText& text) {
    const std::size_t parameter = inStr(1, part, "boundary=");
    if (parameter == 0) {
        return;
    }
    Parts parts(part, quoted(part, parameter));
    PartType type;
    for (int number = 1; number <= kMaximumParts; ++number) {
        const auto inner = parts.next();
        if (!inner) {
            return;
        }
        type.read(*inner);
        if (type.type == "text/plain") {
            text.set(type.cut(*inner));
            stripTwice(text);
        }
    }
}

void readParts(std::string_view body, std::string_view boundary, StrippedText& text,
               std::vector<FoundAttachment>& attachments) {
    Parts parts(body, boundary);
    PartType type;
    for (int number = 1; number <= kMaximumParts; ++number) {
        const auto part = parts.next();
        if (!part) {
            return;
        }
        type.read(*part);
        if (type.type == "text/html" || type.type == "text/plain") {
            text.setOrAppend(withoutPartHeaders(type.cut(*part)));
            stripTwice(text);
        } else if (isAttachment(type.type)) {
            attachments.push_back({std::string(quoted(*part, inStr(1, *part, "name="))), *part});
        } else if (type.type.starts_with("message/rfc822")) {
            text.setOrAppend(withoutPartHeaders(type.cut(*part)));
        } else if (type.type == "multipart/alternative") {
            takeAlternative(*part, text);
        }
    }
}
} // namespace

std::vector<std::string_view> partsOf(std::string_view body, std::string_view boundary, std::size_t most) {
    std::vector<std::string_view> found;
    Parts parts(body, boundary);
    while (found.size() < most) {
        const auto part = parts.next();
        if (!part) {
            break;
        }
        found.push_back(*part);
    }
    return found;
}

ReadMessage readMultipart(std::string_view body, std::string_view boundary) {
    ReadMessage read;
    StrippedText text;
    const int ended = platform::errorNumberOf([&] { readParts(body, boundary, text, read.attachments); });
    const int taken = platform::errorNumberOf([&] { read.text = text.view(); });
    read.error = ended != 0 ? ended : taken;
    return read;
}
