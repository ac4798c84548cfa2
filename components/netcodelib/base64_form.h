#pragma once

#include <cstddef>
#include <string_view>

namespace netcodelib {

/**
 * Decides whether a text is base64, and all of it.
 *
 * A decoder ignores what is foreign (RFC 2045 section 6.8), so it makes some bytes of any text. But nobody
 * must take these for the file that was sent; the same section allows for refusing such a text. This one
 * knows from a part's text alone, whatever its header said, that the decoder gives every byte that was
 * encoded. It takes
 *
 * - lines of letters of the alphabet, which make whole groups of four with the padding behind them; white
 *   space at the ends of lines, and empty lines;
 * - lines of any length that is a multiple of four; or all of one length, the last one but for, when that is
 *   at least kLeastLineLetters: this is how gateways break long lines;
 * - foreign characters in few of many lines of one length, where all letters of such a line are there as
 *   well: something has been put in, and nothing is lost;
 * - the "--" of the next boundary at the end;
 * - any text behind the padding that begins with a line without letters, such as a mailing list's.
 *
 * It refuses everything else: foreign characters in between, spaces between words, padding that is missing,
 * which is how a text looks whose end is lost, further encoded text behind padding, of which a decoder knows
 * nothing, and a text that is only the "--", whose part has lost even its empty line.
 *
 *     form.add(piece); ... form.finish();
 */
class Base64Form {
  public:
    /** Fewest letters that a line has whose length alone tells that it is encoded text. */
    static constexpr std::size_t kLeastLineLetters = 40;

    /** \throws RuntimeError 20502; the object is of no more use then. */
    void add(std::string_view text);

    /** \throws RuntimeError 20502 */
    void finish();

  private:
    /** What is known of the line that is coming. */
    struct Line {
        std::size_t letters = 0;
        std::size_t padding = 0;
        /** Foreign characters, and white space between others. */
        std::size_t foreign = 0;
        /** Of the foreign ones, the hyphens that nothing has followed. */
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
    /** What comes has nothing to do with the encoded text. */
    bool passed_ = false;

    /** Of the encoded text so far. */
    std::size_t letters_ = 0;
    std::size_t padding_ = 0;
    /** Letters and padding of the first line, and of the last one. */
    std::size_t firstLine_ = 0;
    std::size_t lastLine_ = 0;
    bool linesAreGroups_ = true;
    bool linesAreAlike_ = true;
    /** Lines as long as the first one, without anything foreign and with. */
    std::size_t cleanLines_ = 0;
    std::size_t disturbedLines_ = 0;
};

} // namespace netcodelib
