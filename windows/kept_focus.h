#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

/**
 * Keeps a person's place in a window. When the control with the keyboard is disabled, Qt hands the keyboard
 * to the next control that is enabled, which may be Exit, or to none. Here the window itself holds it
 * meanwhile, and the control gets it back as soon as it can be used again, unless the person has gone
 * elsewhere.
 */
class KeptFocus : public QObject {
  public:
    explicit KeptFocus(QWidget& window);

    /** Remembers the control that has the keyboard now; for a window that may never have been active. */
    void remember();

  protected:
    bool eventFilter(QObject* control, QEvent* event) override;

  private:
    void focusChanged(const QWidget* before, QWidget* now);
    void setPlace(QWidget* control);
    void placeEnabledOrDisabled();

    QWidget& window_;
    QPointer<QWidget> place_;
    bool lost_ = false;
};
