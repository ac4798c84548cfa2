#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace smtplib {

/** Longest line of a message, in bytes, without its line end (RFC 5321 section 4.5.3.1.6). */
inline constexpr std::size_t kMaximumTextLineBytes = 998;

/**
 * The length of the text up to its last line end, in bytes, when that part can go out unchanged: its lines
 * end in CR LF, none is too long, and there is no other CR or LF and no NUL. Otherwise 0.
 */
std::size_t bytesOfReadyLines(std::string_view text);

/**
 * Turns text that comes in pieces into the lines that SMTP requires, and changes nothing else. It keeps one
 * line in memory at most.
 *
 * - A bare CR or LF becomes CR LF (RFC 5321 section 2.3.8); the last line gets an end when it has none.
 * - A line that is too long is broken behind its last space that fits; where there is none, as late as it
 *   can be without cutting a UTF-8 character.
 * - NUL, which no server need take, is left out: a person who forwards a message cannot see it, let alone
 *   remove it. Other bytes go out as they are.
 */
class WireText {
  public:
    /** Takes a piece and appends to the output all that the next piece cannot change. */
    void add(std::string_view piece, std::string& output);

    /** Appends the rest. The text ends here, and another may begin. */
    void finish(std::string& output);

  private:
    void addSlowly(std::string_view piece, std::string& output);
    void addToLine(std::string_view run, std::string& output);
    void endLine(std::string& output);

    /** The unfinished line: where it has to be broken depends on what follows. */
    std::string line_;
    /** The text so far ends in a CR whose LF may still come. */
    bool carriageReturn_ = false;
};

/**
 * Doubles the dot that a line starts with (RFC 5321 section 4.5.2). The text comes in pieces whose lines end
 * in CR LF.
 */
class DotStuffer {
  public:
    void add(std::string_view piece, std::string& output);

  private:
    bool atLineStart_ = true;
};

} // namespace smtplib
