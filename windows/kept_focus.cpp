#include "windows/kept_focus.h"

#include <QApplication>
#include <QEvent>

#include <utility>

KeptFocus::KeptFocus(QWidget& window) : window_(window) {
    connect(qApp, &QApplication::focusChanged, this, &KeptFocus::focusChanged);
}

void KeptFocus::remember() {
    QWidget* const control = window_.focusWidget();
    if (control != nullptr && control != &window_) {
        setPlace(control);
    }
}

void KeptFocus::focusChanged(const QWidget* before, QWidget* now) {
    if (now == nullptr || now == &window_ || now->window() != &window_) {
        return;
    }
    // A window that becomes active while its place is disabled gets another control from Qt, as Exit, which
    // the next space would press.
    if (before == nullptr && lost_ && now == neverGiven_) {
        window_.setFocus();
        return;
    }
    // Qt, not the user, moves the focus away from a disabled control.
    const bool handedOn = before != nullptr && before == place_ && !before->isEnabled();
    if (!handedOn) {
        setPlace(now);
    }
}

void KeptFocus::setPlace(QWidget* control) {
    if (place_ == control) {
        return;
    }
    if (place_) {
        place_->removeEventFilter(this);
    }
    place_ = control;
    lost_ = false;
    place_->installEventFilter(this);
}

bool KeptFocus::eventFilter(QObject* control, QEvent* event) {
    if (control == place_ && event->type() == QEvent::EnabledChange) {
        placeEnabledOrDisabled();
    }
    return false;
}

void KeptFocus::placeEnabledOrDisabled() {
    const QWidget* const holder = window_.focusWidget();
    const bool byAControl = holder != nullptr && holder != &window_;
    if (!place_->isEnabled()) {
        lost_ = true;
        if (byAControl) {
            window_.setFocus();
        }
    } else if (std::exchange(lost_, false) && !byAControl) {
        place_->setFocus();
    }
}
