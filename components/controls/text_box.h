#pragma once

#include <QPlainTextEdit>
#include <QTimer>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QLabel;

namespace controls {

/**
 * A text box for mail, which is bytes. What was put in comes out again byte for byte, wherever a person has
 * not changed it, although a text box keeps neither line ends nor every character.
 *
 * A long text appears piece by piece, so that the window never stands still; until it is complete it can be
 * read but not written into. A line that is longer than kLongestShownLine is shown on several, and stays one
 * in all that is copied, found or taken out. Of a text that is longer than a person reads, only the start is
 * shown, and a line below it says how much is not; what is not shown stays part of the text.
 *
 * Only plain text can be pasted or dropped into it, and only so much that the window lives on.
 */
class TextBox : public QPlainTextEdit {
  public:
    /** Bytes that are put into the box at a time, give or take a line. */
    static constexpr std::size_t kPieceBytes = 32'768;
    /** Bytes and lines that are shown at the most, give or take a line: 100 MB of memory at the worst. */
    static constexpr std::size_t kMostShownBytes = 16U << 20U;
    static constexpr std::size_t kMostShownLines = 250'000;

    explicit TextBox(QWidget* parent = nullptr);

    /** Shows the text in place of any other. */
    void setBytes(std::string text);

    /**
     * What the box holds: lines that were put in as they came, lines that were typed in UTF-8. A typed line
     * ends in CR LF.
     */
    std::string bytes() const;

    /**
     * What the box shows, or will show when it is filled, with the line ends that bytes() has, and behind it
     * what is too much to be shown.
     */
    QString shownText() const;

    /** True while a part of the text has still to appear. */
    bool isFilling() const { return filledLines_ < lineStarts_.size(); }

    /** Bytes at the end of the text that are not shown, however long one waits. */
    std::size_t bytesNotShown() const { return original_.size() - shownEnd_; }

    /** What is chosen, as a clipboard has it: "\n" ends a line. */
    QString chosenText() const;

    /**
     * Chooses the next place where the text is, behind what is chosen or before it; false when what has
     * appeared so far has none. Letters count in either case.
     */
    bool findText(const QString& wanted, bool backward);

    /** Takes back what made the text larger or smaller. */
    void showAtNormalSize();

    /** Runs when all that is shown of a text has appeared. It must not throw. */
    std::function<void()> Filled;

  protected:
    void resizeEvent(QResizeEvent* event) override;

    // text_box_editing.cpp
    QMimeData* createMimeDataFromSelection() const override;
    void keyPressEvent(QKeyEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;

  private:
    void fill();
    void fillFurther();
    void showNoMore();
    void endFilling();
    void tellWhatIsNotShown();
    void placeNote();
    void noteChange(int position, int charactersAdded);
    std::string_view line(std::size_t number) const;

    // text_box_editing.cpp
    void takeIn(const QString& text);
    void tellLater(const QString& text);

    std::string original_;
    /** Where the shown lines of the original start. Never empty: an empty text is one empty line. */
    std::vector<std::size_t> lineStarts_{0};
    /** Where what is shown of the original ends. */
    std::size_t shownEnd_ = 0;
    /** Lines of the original that are in the box. */
    std::size_t filledLines_ = 1;
    /** Lines at the top and at the bottom of the box that are as they were put in. */
    std::size_t untouchedAtTop_ = 1;
    std::size_t untouchedAtBottom_ = 1;
    bool untouched_ = true;
    bool filling_ = false;
    bool telling_ = false;
    Qt::TextInteractionFlags whenFilled_;
    QTimer filler_;
    /** Says how much is not shown; hidden while that is nothing. */
    QLabel* lblNotShown_;
};

} // namespace controls
