#pragma once

#include "windows/kept_focus.h"

#include <QCursor>
#include <QPointer>
#include <QWidget>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

class Form;

/**
 * Disables a control or a window for as long as this lives; a disabled window cannot be closed either. The
 * keyboard focus is afterwards where it was before. What was disabled already stays disabled.
 */
class WhileDisabled {
  public:
    explicit WhileDisabled(Form& window);
    explicit WhileDisabled(QWidget& control);
    ~WhileDisabled();
    WhileDisabled(const WhileDisabled&) = delete;
    WhileDisabled& operator=(const WhileDisabled&) = delete;

  private:
    /** Null when the control or window was disabled already. */
    QPointer<QWidget> enabledBefore_;
};

/** Shows the hourglass over a window for as long as this lives. If it was shown already, it stays. */
class WhileHourglass {
  public:
    explicit WhileHourglass(Form& window);
    ~WhileHourglass();
    WhileHourglass(const WhileHourglass&) = delete;
    WhileHourglass& operator=(const WhileHourglass&) = delete;

  private:
    /** Null when the hourglass was shown already. */
    QPointer<Form> normalBefore_;
};

/**
 * A window of the program. Its class gives the looks: controls under their names, layout, wiring. What the
 * window does is defined where that behaviour lives.
 */
class Form : public QWidget {
  public:
    /** Fills the window. Runs once, before the window's accessor returns it for the first time. */
    virtual void Form_Load() = 0;

    /** Runs when the window is unloaded, right before it is hidden and forgotten; see unload(). */
    virtual void Form_Unload() = 0;

    /** Does in advance the slow part of showing the window for the first time. */
    void prepare();

    /** Shows the window, and brings it to the front when it is already there. */
    void bringUp();

    /** Disables the window that this one is opened from until giveControlBack(). */
    void takeControlFrom(Form& opener);

    /**
     * Enables that window again and brings it to the front. A second call does nothing, since by then the
     * opener may be disabled by another window.
     */
    void giveControlBack();

    /** The window that control was taken from last; null when there was none or it no longer exists. */
    const Form* opener() const { return opener_; }

    /** Whether the window stands at the foot of its opener, whose fields stay in view then. */
    virtual bool standsAtTheFoot() const { return false; }

  protected:
    Form(const QString& objectName, const QString& caption);

    /** Takes the title that start-up has made from the settings. Before start-up the window keeps its own. */
    void takeProgramTitle();

    // windows/windows.cpp
    /** A disabled window cannot be closed; any other one is unloaded. */
    void closeEvent(QCloseEvent* event) override;
    /**
     * Puts the window in front of the one that it was opened from: where it was last in this run, or else in
     * the middle of that window, on the same screen.
     */
    void showEvent(QShowEvent* event) override;
    /** Stores size and place for the next window with the same object name. */
    void hideEvent(QHideEvent* event) override;

    void changeEvent(QEvent* event) override;

    /** Draws a dimmed frame around a disabled window. */
    void paintEvent(QPaintEvent* event) override;

    /** Escape closes the window, as its frame does. */
    void closeOnEscape();

    /** See KeptFocus::neverGive(). */
    void neverGiveTheKeyboardTo(const QWidget& control) { keptFocus_.neverGive(control); }

    /** The Tab key walks through the controls in this order. */
    static void setTabSequence(std::initializer_list<QWidget*> controls);

    /** Resizes the window to so many average letters and lines of its font, but within the screen. */
    void resizeToText(int letters, int lines);

  private:
    friend class WhileDisabled;
    friend class WhileHourglass;

    /** Shows the hourglass, or the normal pointers, over this window and all its controls. */
    void setHourglass(bool on);

    /** Disables the window. Once it is enabled again, the control that has the keyboard focus now gets it
     * back. */
    void rest();

    /** Lets Return press the button that has the keyboard focus, as Space does. */
    void letReturnPressButtons();
    /** Leaves room around the captions of buttons, with letters of any size. */
    void giveCaptionsRoom();
    /** Aligns labels to the other side in a window that reads from right to left. */
    void mirrorLabels();
    /** Keeps the dots at the end of a button's caption in a window that reads from right to left. */
    void keepCaptionsInTheirOrder();

    KeptFocus keptFocus_{*this};
    QPointer<Form> opener_;
    std::optional<WhileDisabled> openerRests_;
    bool hourglass_ = false;
    /** Controls with mouse pointers of their own, each with the pointer to restore after the hourglass. */
    std::vector<std::pair<QPointer<QWidget>, QCursor>> ownPointers_;
};
