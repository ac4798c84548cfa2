#pragma once

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

    void setProgress(int value) {
        setValue(qBound(minimum(), value, maximum()));
        setVisible(value > minimum());
    }
};

} // namespace MSComctlLib
