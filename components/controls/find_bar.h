#pragma once

#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace controls {

class TextBox;

/**
 * A row below a text box that finds text in it. It is hidden until it is opened. Letters count in either
 * case. Where the text has still to appear, finding waits for it and says so.
 */
class FindBar : public QWidget {
  public:
    /** The box must outlive the bar. */
    FindBar(TextBox* box, QWidget* parent);

    /** Shows the bar, with what is chosen in the box as the text to find, and puts the focus into it. */
    void open();

    void close();

    /** Finds the next place behind the last one; from the end of the text it goes on at its start. */
    void findNext();

    /** The same the other way round. */
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
