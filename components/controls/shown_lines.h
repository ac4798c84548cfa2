#pragma once

#include <QString>

#include <cstddef>
#include <string_view>

namespace controls {

/** Most bytes of a line that are shown in one piece: Qt would take minutes to lay out many megabytes. */
inline constexpr std::size_t kLongestShownLine = 10'000;

/** A break for showing in a text for a box: no line ends there. holdable() replaces those of a text itself.
 */
inline constexpr QChar kShownBreak = u'\uFDD0';

/**
 * Splits a text into the lines that a text box shows. CRLF, CR and LF end a line. A line that is too long is
 * cut between two characters. A text has one line more than line ends. The time is proportional to the length
 * of the text, whatever its line ends are.
 */
class ShownLines {
  public:
    /** The text must outlive the lines. */
    explicit ShownLines(std::string_view text);

    /** True until the last line has been taken. */
    bool hasNext() const noexcept { return hasNext_; }

    /** Returns the next line, with its line end. */
    std::string_view next();

  private:
    std::size_t lineLength();

    std::string_view text_;
    std::size_t position_ = 0;
    /** The positions of the next CR and the next LF, at or after position_. */
    std::size_t carriageReturn_;
    std::size_t lineFeed_;
    bool hasNext_ = true;
};

/** Returns the CRLF, CR or LF at the end of a line; empty when there is none. */
std::string_view lineEnd(std::string_view line) noexcept;

/** Returns a line as a text box can hold it, without its line end. */
QString shownLine(std::string_view line);

/** Returns the text with a visible sign in place of each character that a text box would take for a line end.
 */
QString holdable(QString text);

} // namespace controls
