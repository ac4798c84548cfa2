#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace smtplib {

/** Longest line of a message, in bytes, without its line end (RFC 5321 section 4.5.3.1.6). */
inline constexpr std::size_t kMaximumTextLineBytes = 998;

/**
 * How much of the text, up to its last line end, can go out as it is: whole lines that end in CR LF, none too
 * long, no other CR or LF and no NUL. All of it or nothing: where one line is not ready, 0.
 */
std::size_t bytesOfReadyLines(std::string_view text);

/**
 * Makes lines of any text that comes in pieces, as SMTP must have them, and changes nothing else. What is in
 * memory is one line at most.
 *
 * - A bare CR or LF becomes CR LF (RFC 5321 section 2.3.8); the last line gets an end when it has none.
 * - A line that is too long is broken behind its last space that fits; where there is none, as late as it
 *   can be without cutting a UTF-8 character.
 * - NUL, which no server need take, is left out: a person who forwards a message cannot see it, let alone
 *   remove it. Other bytes go out as they are.
 */
class WireText {
  public:
    /** Appends to the output what is certain after this piece. */
    void add(std::string_view piece, std::string& output);

    /** Appends the rest. The text ends here, and another may begin. */
    void finish(std::string& output);

  private:
    void addSlowly(std::string_view piece, std::string& output);
    void addToLine(std::string_view run, std::string& output);
    void endLine(std::string& output);

    /** The line so far, as long as nobody can tell where it is to be broken. */
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
