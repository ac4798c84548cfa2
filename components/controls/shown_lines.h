#pragma once

#include <QString>

#include <cstddef>
#include <string_view>

namespace controls {

/** Bytes of one line that are shown together: one line of many megabytes would take minutes to lay out. */
inline constexpr std::size_t kLongestShownLine = 10'000;

/** In a text for a box: a break for showing, where no line ends. holdable() leaves none from elsewhere. */
inline constexpr QChar kShownBreak = u'\uFDD0';

/**
 * Cuts a text into the lines that a text box shows, one after the other. CR LF, CR and LF end a line; one
 * that is too long is cut between two characters. A text has one line more than line ends. The time is in
 * proportion to the text, whatever its line ends are.
 */
class ShownLines {
  public:
    /** The text must outlive the lines. */
    explicit ShownLines(std::string_view text);

    /** True until the last line has been taken. */
    bool hasNext() const noexcept { return hasNext_; }

    /** The next line, its line end included. */
    std::string_view next();

  private:
    std::size_t lineLength();

    std::string_view text_;
    std::size_t position_ = 0;
    /** The first of each kind at or behind the position. */
    std::size_t carriageReturn_;
    std::size_t lineFeed_;
    bool hasNext_ = true;
};

/** The CR LF, CR or LF at the end of a line; empty where there is none. */
std::string_view lineEnd(std::string_view line) noexcept;

/** A line as a text box can hold it, without its line end. */
QString shownLine(std::string_view line);

/** The text with a sign in the place of each character that a text box would take for the end of a line. */
QString holdable(QString text);

} // namespace controls
