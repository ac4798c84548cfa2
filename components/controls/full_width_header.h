#pragma once

#include <QHeaderView>

namespace controls {

/** The titles above a list, as wide as the list: it looks like a title, too, where no column is any more. */
class FullWidthHeader : public QHeaderView {
  public:
    explicit FullWidthHeader(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace controls
