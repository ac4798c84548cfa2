#pragma once

#include <QLineEdit>

namespace controls {

/**
 * A one-line field of limited length. It refuses as a whole what the user types, pastes or drops beyond
 * kMostCharacters, and a box says so. It cuts nothing, since a cut address would be a different one.
 */
class LineBox : public QLineEdit {
  public:
    /** About a thousand addresses. At this length each key takes about 1/30 s; at a million characters, 1 s.
     */
    static constexpr int kMostCharacters = 30'000;

    explicit LineBox(QWidget* parent = nullptr);

  private:
    void tellLater();

    bool telling_ = false;
};

} // namespace controls
