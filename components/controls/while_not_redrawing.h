#pragma once

#include "components/controls/msflexgrid.h"

#include <QPointer>

namespace MSFlexGridLib {

/** Keeps the cells on the screen as they are, for as long as this lives. What somebody else has stopped stays
 * so. */
class WhileNotRedrawing {
  public:
    explicit WhileNotRedrawing(MSFlexGrid& grid) : redrewBefore_(grid.redraws() ? &grid : nullptr) {
        grid.setRedraw(false);
    }

    ~WhileNotRedrawing() {
        if (redrewBefore_) {
            redrewBefore_->setRedraw(true);
        }
    }

    WhileNotRedrawing(const WhileNotRedrawing&) = delete;
    WhileNotRedrawing& operator=(const WhileNotRedrawing&) = delete;

  private:
    /** Null when it was not redrawn already. */
    QPointer<MSFlexGrid> redrewBefore_;
};

} // namespace MSFlexGridLib
