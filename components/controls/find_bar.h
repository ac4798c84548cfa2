#pragma once

#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace controls {

class TextBox;

/**
 * A row below a text box that finds text in it, hidden until it is opened. Finding ignores case. While the
 * box is still being filled, a search without a result waits for the rest of the text and says so.
 */
class FindBar : public QWidget {
  public:
    /** The box must outlive the bar. */
    FindBar(TextBox* box, QWidget* parent);

    /** Shows the bar with the focus in it. The text selected in the box becomes the text to find. */
    void open();

    void close();

    /** Finds the next place after the last one. At the end of the text it goes on from the start. */
    void findNext();

    /** The same backwards. */
    void findPrevious();

    QLineEdit* txtFind;
    QPushButton* cmdNext;
    QPushButton* cmdPrevious;
    QLabel* lblFound;

  private:
    void find(bool backward);
    void forgetResult();
    void tell(const QString& result);

    TextBox* box_;
    /** The direction of a search that waits for the rest of the text. */
    std::optional<bool> waitsBackward_;
};

} // namespace controls
