#pragma once

#include <QHeaderView>

namespace controls {

/** The titles above a list. The room beside the last column is painted like an empty title. */
class FullWidthHeader : public QHeaderView {
  public:
    explicit FullWidthHeader(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace controls
