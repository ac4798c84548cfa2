#pragma once

#include <QPlainTextEdit>
#include <QTimer>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class QLabel;

namespace controls {

/**
 * A text box for mail, which is bytes. bytes() returns each line that the user has not changed byte for byte
 * as it was set, although Qt's text box keeps neither line ends nor every character.
 *
 * A long text appears piece by piece, so that the window stays responsive. Until it is complete, the user can
 * read but not edit it. A line that is longer than kLongestShownLine is shown on several lines, and stays one
 * line in everything that is copied, found or taken out. Of a very long text only the start is shown, and a
 * note below it says how much is not. The rest stays part of the text.
 *
 * Only plain text can be pasted or dropped, and only so much that the window stays responsive.
 */
class TextBox : public QPlainTextEdit {
  public:
    /** Bytes that are put into the box at a time; up to one line more. */
    static constexpr std::size_t kPieceBytes = 32'768;
    /** Most bytes and lines that are shown, up to one line more. They take at most 100 MB of memory. */
    static constexpr std::size_t kMostShownBytes = 16U << 20U;
    static constexpr std::size_t kMostShownLines = 250'000;

    explicit TextBox(QWidget* parent = nullptr);

    /** Replaces the text in the box. */
    void setBytes(std::string text);

    /** How typed text becomes bytes; platform::toBytes() unless another function is set. */
    void setEncoder(std::function<std::string(const QString&)> encoder) { encoder_ = std::move(encoder); }

    /**
     * Returns what the box holds: lines set by setBytes() as they were, and typed or changed lines in UTF-8,
     * ended by CRLF.
     */
    std::string bytes() const;

    /**
     * Returns the whole text as the box shows it, with the line ends of bytes(). It includes what has not
     * appeared yet and what is too much to be shown.
     */
    QString shownText() const;

    /** True while a part of the text has not appeared yet. */
    bool isFilling() const { return filledLines_ < lineStarts_.size(); }

    /** Bytes at the end of the text that are too much and will not be shown. */
    std::size_t bytesNotShown() const { return original_.size() - shownEnd_; }

    /** The selected text, without breaks for showing; "\n" ends a line. */
    QString chosenText() const;

    /**
     * Selects the next place where the text is, after the selection or before it. Returns false when there is
     * none in what has appeared so far. Case is ignored.
     */
    bool findText(const QString& wanted, bool backward);

    /** Undoes zoomIn() and zoomOut(). */
    void showAtNormalSize();

    /** Called when all that is shown of a text has appeared. It must not throw. */
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
    std::string typed(const QString& text) const;

    // text_box_editing.cpp
    void takeIn(const QString& text);
    void tellLater(const QString& text);

    std::function<std::string(const QString&)> encoder_;
    std::string original_;
    /** Where the shown lines of the original start. Never empty: an empty text is one empty line. */
    std::vector<std::size_t> lineStarts_{0};
    /** Where the shown part of the original ends. */
    std::size_t shownEnd_ = 0;
    /** Lines of the original that are in the box. */
    std::size_t filledLines_ = 1;
    /** Numbers of lines at the top and at the bottom of the box that are as they were set. */
    std::size_t untouchedAtTop_ = 1;
    std::size_t untouchedAtBottom_ = 1;
    bool untouched_ = true;
    bool filling_ = false;
    bool telling_ = false;
    Qt::TextInteractionFlags whenFilled_;
    QTimer filler_;
    /** Says how much is not shown; hidden when all is shown. */
    QLabel* lblNotShown_;
};

} // namespace controls
