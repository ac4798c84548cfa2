#pragma once

#include "components/controls/paced_showing.h"

#include <QProgressBar>

namespace MSComctlLib {

/**
 * A progress bar without a text, to be seen while there is progress. Values outside its range are taken as
 * the nearer end.
 */
class ProgressBar : public QProgressBar {
  public:
    explicit ProgressBar(QWidget* parent = nullptr) : QProgressBar(parent) {
        setTextVisible(false);
        QSizePolicy policy = sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        setSizePolicy(policy);
        hide();
    }

    void setMin(int minimum) { setMinimum(minimum); }

    /** A maximum that is not above the minimum is passed over: such a bar would show endless motion. */
    void setMax(int maximum) {
        if (maximum > minimum()) {
            setMaximum(maximum);
        }
    }

    /**
     * May be called for every line of a message: value() and the picture follow about 60 times a second, and
     * at once at both ends of the range.
     */
    void setProgress(int value) {
        progress_ = qBound(minimum(), value, maximum());
        if (progress_ == minimum() || progress_ == maximum()) {
            showing_.showNow();
        } else {
            showing_.changed();
        }
    }

  private:
    void showProgress() {
        setValue(progress_);
        setVisible(progress_ > minimum());
    }

    int progress_ = 0;
    controls::PacedShowing showing_{[this] { showProgress(); }};
};

} // namespace MSComctlLib
