#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standard {

/**
 * Lines of text that come out of the words and blocks of a document. Breaks, marks and blanks are only noted
 * until a word comes, so that none stands at the start or at the end, or twice.
 */
class HtmlLayout {
  public:
    /** \param inputBytes What is written around the words has at most so many bytes, and a few. */
    explicit HtmlLayout(std::size_t inputBytes) : decorationLeft_(inputBytes + kFewBytes) {}

    /** Adds text, whose white space counts as one blank; a no-break space counts for itself. */
    void addText(std::string_view text);

    /** Adds text whose white space stays as it is. */
    void addPreformatted(std::string_view text);

    /** A block begins or ends: 1 for a new line, 2 for an empty line between. */
    void breakBlock(int lineEnds);

    /** The line ends here. */
    void endLine();

    /** A line across. */
    void addRule();

    void beginQuotation() { ++quotations_; }

    void endQuotation() { quotations_ -= quotations_ > 0 ? 1 : 0; }

    /** Begins a list; its items are counted from the number, or have a sign when it is below 0. */
    void beginList(int firstNumber);
    void endList();
    void beginItem();
    void endItem();

    void beginTable();
    void endTable();
    void beginRow();
    void beginCell();
    void endCell();

    /** Where the text stands now. */
    std::size_t size() const noexcept { return text_.size(); }

    /** What was added since it had this size. */
    std::string_view since(std::size_t size) const { return std::string_view(text_).substr(size); }

    std::string takeText() { return std::move(text_); }

  private:
    static constexpr std::size_t kFewBytes = 4096;
    /** Lists and quotations lie deeper without moving further in. */
    static constexpr std::size_t kMostIndented = 8;
    /** Tables that lie deeper are read as if each cell were a block. */
    static constexpr std::size_t kDeepestTable = 32;

    struct Table {
        bool rowHasText = false;
        bool inCell = false;
        bool cellHasText = false;
        bool cellHasLines = false;
    };

    void beginWord();
    void newLines();
    void decorate(std::string_view text);
    bool atStartOfCell() const;
    void noteTextInCells();

    std::string text_;
    std::size_t decorationLeft_;
    int lineEnds_ = 0;
    bool blank_ = false;
    std::size_t hardBlanks_ = 0;
    bool separator_ = false;
    std::size_t quotations_ = 0;
    /** Those that the last line stands in. */
    std::size_t quotationsBefore_ = 0;
    /** The next number of each list; below 0 for a list of signs. */
    std::vector<int> lists_;
    /** Lists that are deeper than anybody counts. */
    std::size_t furtherLists_ = 0;
    std::string mark_;
    std::vector<Table> tables_;
    std::size_t furtherTables_ = 0;
};

} // namespace standard
