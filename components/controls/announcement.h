#pragma once

#include <QWidget>

namespace controls {

/** What a screen reader says at once, wherever the keyboard is. It is heard and never seen. */
class Announcement : public QWidget {
  public:
    explicit Announcement(QWidget* parent);

    void tell(const QString& text);
};

} // namespace controls
