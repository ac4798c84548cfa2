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
 * Lets nobody use a control, or a window nor close it, for as long as this lives; the keyboard is then where
 * it was before. What somebody else has disabled stays so.
 */
class WhileDisabled {
  public:
    explicit WhileDisabled(Form& window);
    explicit WhileDisabled(QWidget& control);
    ~WhileDisabled();
    WhileDisabled(const WhileDisabled&) = delete;
    WhileDisabled& operator=(const WhileDisabled&) = delete;

  private:
    /** Null when it was disabled already. */
    QPointer<QWidget> enabledBefore_;
};

/** Shows the hourglass over a window, for as long as this lives. Where somebody else shows it, it stays. */
class WhileHourglass {
  public:
    explicit WhileHourglass(Form& window);
    ~WhileHourglass();
    WhileHourglass(const WhileHourglass&) = delete;
    WhileHourglass& operator=(const WhileHourglass&) = delete;

  private:
    /** Null when it was shown already. */
    QPointer<Form> normalBefore_;
};

/**
 * A window of the program. Its class gives the looks: controls under their names, layout, wiring. What the
 * window does is defined where that behaviour lives.
 */
class Form : public QWidget {
  public:
    /** Fills the window; runs once, before anybody else gets hold of it. */
    virtual void Form_Load() = 0;

    /** Says good-bye; the window is hidden and forgotten right after it. */
    virtual void Form_Unload() = 0;

    /** Does what takes time before the window can be shown for the first time, while nobody waits for it. */
    void prepare();

    /** Shows the window, and brings it to the front when it is already there. */
    void bringUp();

    /** Lets the window that this one is opened from rest until giveControlBack(). */
    void takeControlFrom(Form& opener);

    /**
     * Lets that window be used again, and brings it to the front. Only once: who was given control may have
     * given it to another window since.
     */
    void giveControlBack();

    /** The window that control was taken from last, for as long as there is that window; or null. */
    const Form* opener() const { return opener_; }

  protected:
    Form(const QString& objectName, const QString& caption);

    /** Takes the title that start-up has found in the settings; without one the window keeps its own. */
    void takeProgramTitle();

    // windows/windows.cpp
    /** A disabled window cannot be closed; any other one is unloaded. */
    void closeEvent(QCloseEvent* event) override;
    /**
     * Puts the window above the one that it was opened from: where it was last in this run, or else in the
     * middle of that one, on the same screen.
     */
    void showEvent(QShowEvent* event) override;
    /** Remembers size and place, for the next window of this name. */
    void hideEvent(QHideEvent* event) override;

    void changeEvent(QEvent* event) override;

    /** A window that rests says so by a dimmed frame. */
    void paintEvent(QPaintEvent* event) override;

    /** Escape closes the window, as its frame does. */
    void closeOnEscape();

    /** The Tab key walks through the controls in this order. */
    static void setTabSequence(std::initializer_list<QWidget*> controls);

    /** Size in letters and lines of the window's font, kept within the screen. */
    void resizeToText(int letters, int lines);

  private:
    friend class WhileDisabled;
    friend class WhileHourglass;

    /** The hourglass over this window and all that is in it, or the normal pointers. */
    void setHourglass(bool on);

    /** Disables the window; once it is enabled again, the keyboard is where it is now. */
    void rest();

    /** Return presses the button that has the keyboard, as Space does. */
    void letReturnPressButtons();
    /** Captions of buttons keep away from their edges, with letters of any size. */
    void giveCaptionsRoom();
    /** Where the window reads from right to left, labels stand as in a mirror. */
    void mirrorLabels();
    /** And captions read there as they are written. */
    void keepCaptionsInTheirOrder();

    KeptFocus keptFocus_{*this};
    QPointer<Form> opener_;
    std::optional<WhileDisabled> openerRests_;
    bool hourglass_ = false;
    /** Parts with pointers of their own, and what these are without the hourglass. */
    std::vector<std::pair<QPointer<QWidget>, QCursor>> ownPointers_;
};
