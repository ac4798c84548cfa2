#pragma once

#include <QLineEdit>

namespace controls {

/**
 * A field of one line that nothing can make too long to work with: whatever would be typed, pasted or dropped
 * beyond kMostCharacters is refused as a whole and a box says so. It is never cut, since an address that is
 * cut would be another one.
 */
class LineBox : public QLineEdit {
  public:
    /** Each key costs a tenth of a second by then; ten times as many would cost a second. */
    static constexpr int kMostCharacters = 100'000;

    explicit LineBox(QWidget* parent = nullptr);

  private:
    void tellLater();

    bool telling_ = false;
};

} // namespace controls
