#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

/**
 * Keeps the user's place in a window. When the control with the keyboard focus is disabled, Qt passes the
 * focus to the next enabled control, which may be Exit, or to none. This gives the focus to the window itself
 * meanwhile, and back to the control as soon as it is enabled, unless the user has moved to another control.
 */
class KeptFocus : public QObject {
  public:
    explicit KeptFocus(QWidget& window);

    /** Remembers the window's focus widget, also in a window that has not been active yet. */
    void remember();

    /** While the focus widget is disabled, this control does not get the keyboard because the window becomes
     * active. */
    void neverGive(const QWidget& control) noexcept { neverGiven_ = &control; }

  protected:
    bool eventFilter(QObject* control, QEvent* event) override;

  private:
    void focusChanged(const QWidget* before, QWidget* now);
    void setPlace(QWidget* control);
    void placeEnabledOrDisabled();

    QWidget& window_;
    QPointer<QWidget> place_;
    bool lost_ = false;
    const QWidget* neverGiven_ = nullptr;
};
