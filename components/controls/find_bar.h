#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace controls {

/**
 * A row below a text box that finds text in it. It is hidden until it is opened, and Escape closes it.
 * Letters count in either case.
 */
class FindBar : public QWidget {
  public:
    /** The box must outlive the bar. */
    FindBar(QPlainTextEdit* box, QWidget* parent);

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

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void find(bool backward);

    QPlainTextEdit* box_;
};

} // namespace controls
