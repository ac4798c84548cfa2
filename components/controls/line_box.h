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
    /** A thousand addresses. Each key takes some thirtieth of a second by then, a second at a million. */
    static constexpr int kMostCharacters = 30'000;

    explicit LineBox(QWidget* parent = nullptr);

  private:
    void tellLater();

    bool telling_ = false;
};

} // namespace controls
