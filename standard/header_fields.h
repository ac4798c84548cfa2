#pragma once

#include "platform/text.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standard {

/** What becomes of a line in a header that is neither a field nor the continuation of one. */
enum class OddLines {
    /**
     * It is passed over: the header goes on behind it. Only when no field comes any more, or when a line of
     * blanks stands before it, the body begins with it.
     */
    Skipped,
    /** The body begins with it, since some programs leave out the empty line. */
    BeginTheBody
};

/** The fields of one header (RFC 5322 section 2.2). Refers to the bytes that it was read from. */
class HeaderFields {
  public:
    /** Bytes of a header that are looked at; fields behind them do not count. */
    static constexpr std::size_t kMaximumBytes = 1U << 20U;

    /** Reads up to the empty line, to the end of the bytes, or to the odd line that begins the body. */
    HeaderFields(std::string_view bytes, OddLines oddLines);

    /** Where the body begins in the bytes that were given. */
    std::size_t bodyAt() const noexcept { return bodyAt_; }

    bool empty() const noexcept { return fields_.empty(); }

    /**
     * The value of the first field of that name, whatever its letters' case: unfolded and without white space
     * at its ends.
     */
    std::optional<std::string> first(std::string_view name) const;

  private:
    struct Field {
        std::string_view name;
        /** With the line ends and the continuation lines. */
        std::string_view value;
    };

    void takeLine(std::string_view bytes, std::size_t start, std::size_t end);

    std::vector<Field> fields_;
    std::size_t bodyAt_ = 0;
};

/** A folded value on one line: without its line ends, and without white space at its ends. */
std::string unfolded(std::string_view value);

/** Whether two words of the protocol are the same; only the letters a to z have cases. */
bool sameWord(std::string_view one, std::string_view other) noexcept;

/** The line without the line feed, and the carriage return before it, that it may end in. */
std::string_view withoutLineEnd(std::string_view line) noexcept;

using platform::trimmed;

/** The text with the letters A to Z in lower case. */
std::string lowerCase(std::string_view text);

} // namespace standard
