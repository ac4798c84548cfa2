#pragma once

#include "components/controls/paced_showing.h"

#include <QProgressBar>

namespace MSComctlLib {

/**
 * A progress bar without a text, visible while its value is above the minimum. A value outside its range
 * counts as the nearer end of the range.
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

    /** Ignores a maximum that is not above the minimum: Qt would show such a bar as endless motion. */
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
