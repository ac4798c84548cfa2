#pragma once

#include "components/controls/msflexgrid.h"

#include <QPointer>

namespace MSFlexGridLib {

/** Stops the redrawing of the cells for as long as this lives. If it was stopped already, it stays so. */
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
    /** Null when redrawing was off already. */
    QPointer<MSFlexGrid> redrewBefore_;
};

} // namespace MSFlexGridLib
