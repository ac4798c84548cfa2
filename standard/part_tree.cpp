#include "standard/part_tree.h"

#include "standard/transfer_decoder.h"

#include <algorithm>
#include <utility>

namespace standard {

namespace {
/** Whether a part that says that it is text holds nothing but white space. */
bool isBlank(const Entity& part) {
    // Nothing longer than this is white space alone.
    constexpr std::size_t looked = 1'000;
    const std::string_view content = part.content();
    return content.size() <= looked && trimmed(decoded(content, part.encoding())).empty();
}

Readable readableOf(const Entity& part) {
    if (part.isAttached() || !part.isOfKind("text") || part.type() == "text/calendar" || isBlank(part)) {
        return Readable::Not;
    }
    if (part.type() == "text/plain") {
        return Readable::AsPlainText;
    }
    return part.type() == "text/html" ? Readable::AsHtml : Readable::AsText;
}

/** Takes one message apart. */
class Tree {
  public:
    Part partOf(Entity entity, int depth) {
        Part part{std::move(entity), {}, Readable::Not};
        part.readable = readableOf(part.entity);
        if (!part.entity.isOfKind("multipart") || depth >= kMaximumDepth) {
            return part;
        }
        const std::string defaultType =
            part.entity.type() == "multipart/digest" ? "message/rfc822" : "text/plain";
        const auto contents = partsOf(part.entity, left_);
        left_ -= std::min(left_ - 1, contents.size());
        for (const std::string_view content : contents) {
            part.parts.push_back(partOf(Entity(content, defaultType), depth + 1));
            part.readable = std::max(part.readable, part.parts.back().readable);
        }
        return part;
    }

  private:
    /** Parts that may still be taken; at least 1, so that no part is lost. */
    std::size_t left_ = kMaximumParts;
};
} // namespace

Part partTree(Entity message) {
    return Tree().partOf(std::move(message), 0);
}

} // namespace standard
