#pragma once

#include <QHeaderView>

namespace controls {

/** The titles above a list. Between the last column and the edge of the list it looks like an empty title. */
class FullWidthHeader : public QHeaderView {
  public:
    explicit FullWidthHeader(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace controls
