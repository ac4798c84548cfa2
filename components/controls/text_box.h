#pragma once

#include <QPlainTextEdit>
#include <QTimer>

#include <string>
#include <string_view>
#include <vector>

namespace controls {

/**
 * A text box for mail, which is bytes. What was put in comes out again byte for byte, wherever a person has
 * not changed it, although a text box keeps neither line ends nor every character.
 *
 * A long text appears piece by piece, so that the window never stands still; until it is complete it can be
 * read but not written into. A line that is longer than kLongestShownLine is shown on several: one line of
 * many megabytes would take minutes to lay out.
 */
class TextBox : public QPlainTextEdit {
  public:
    /** Bytes of one line that are shown together. */
    static constexpr std::size_t kLongestShownLine = 10'000;
    /** Bytes that are put into the box at a time, give or take a line. */
    static constexpr std::size_t kPieceBytes = 32'768;

    explicit TextBox(QWidget* parent = nullptr);

    /** Shows the text in place of any other. */
    void setBytes(std::string text);

    /**
     * What the box holds: lines that were put in as they came, lines that were typed in UTF-8. A typed line
     * ends in CR LF.
     */
    std::string bytes() const;

    /** What the box shows, or will show when it is filled, with the line ends that bytes() has. */
    QString shownText() const;

    /** True while a part of the text has still to appear. */
    bool isFilling() const { return filledLines_ < lineStarts_.size(); }

  private:
    void fill();
    void noteChange(int position, int charactersAdded);
    std::string_view line(std::size_t number) const;

    std::string original_;
    /** Where the shown lines of the original start. Never empty: an empty text is one empty line. */
    std::vector<std::size_t> lineStarts_{0};
    /** Lines of the original that are in the box. */
    std::size_t filledLines_ = 1;
    /** Lines at the top and at the bottom of the box that are as they were put in. */
    std::size_t untouchedAtTop_ = 1;
    std::size_t untouchedAtBottom_ = 1;
    bool untouched_ = true;
    bool filling_ = false;
    Qt::TextInteractionFlags whenFilled_;
    QTimer filler_;
};

} // namespace controls
