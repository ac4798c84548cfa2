#pragma once

#include <cstddef>
#include <string_view>

namespace netcodelib {

/**
 * Decides whether a text is base64, and complete.
 *
 * A decoder ignores foreign characters (RFC 2045 section 6.8), so it makes some bytes of any text. These must
 * not pass for the file that was sent, and the same section allows for refusing such a text. This class
 * accepts a text only when the text alone, whatever the header of its part says, shows that the decoder gives
 * every byte that was encoded. It accepts
 *
 * - letters of the alphabet which, with the padding behind them, make whole groups of four; white space at
 *   the ends of lines, and empty lines;
 * - lines, except for the last, whose lengths are multiples of four; or which all have one length of at least
 *   kLeastLineLetters, because this is how gateways break long lines;
 * - foreign characters in fewer than half of the lines of one length, when such a line still has all its
 *   letters: something was put in, and nothing is lost;
 * - the "--" of the next boundary at the end;
 * - any text behind the padding that begins with a line without letters, such as a mailing list's footer.
 *
 * It refuses everything else: foreign characters in other places, spaces between words, missing padding (the
 * sign of a text whose end is lost), further encoded text behind padding (which the decoder ignores), and a
 * text that is only the "--", whose part has lost even its empty line.
 *
 *     form.add(piece); ... form.finish();
 */
class Base64Form {
  public:
    /**
     * Lines of equal length that is no multiple of four, and lines with foreign characters, are accepted only
     * when they have at least this many letters.
     */
    static constexpr std::size_t kLeastLineLetters = 40;

    /** \throws RuntimeError 20502; the object must not be used afterwards. */
    void add(std::string_view text);

    /** \throws RuntimeError 20502 */
    void finish();

  private:
    /** What is known of the line that is being read. */
    struct Line {
        std::size_t letters = 0;
        std::size_t padding = 0;
        /** Foreign characters, and white space between others. */
        std::size_t foreign = 0;
        /** How many of the foreign characters are hyphens at the end of the line so far. */
        std::size_t lastHyphens = 0;
        bool whiteSpaceLast = false;

        bool isEmpty() const noexcept { return letters + padding + foreign == 0; }
    };

    void take(char character);
    void endWhiteSpace() noexcept;
    void endLine();
    void addToData(const Line& line);

    Line line_;
    bool lineEndSeen_ = false;
    /** The "--" has come: nothing may follow. */
    bool boundarySeen_ = false;
    /** The encoded text has ended; the rest is not looked at. */
    bool passed_ = false;

    /** Counted in the encoded text so far. */
    std::size_t letters_ = 0;
    std::size_t padding_ = 0;
    /** Letters and padding of the first line, and of the last one. */
    std::size_t firstLine_ = 0;
    std::size_t lastLine_ = 0;
    bool linesAreGroups_ = true;
    bool linesAreAlike_ = true;
    /** Lines as long as the first one: without foreign characters, and with some. */
    std::size_t cleanLines_ = 0;
    std::size_t disturbedLines_ = 0;
};

} // namespace netcodelib
