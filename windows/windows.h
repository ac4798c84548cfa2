#pragma once

#include <QString>

#include <memory>

class Form;
class frmAbout;
class frmFrom;
class frmLogin;
class frmMain;
class frmSend;
class frmSetup;

// The program's windows, each reached through its accessor: made at first use, hidden, and loaded
// (Form_Load has run) before the accessor returns.

frmAbout& aboutWindow();
frmFrom& messageWindow();
frmLogin& loginWindow();
frmMain& mainWindow();
frmSend& composeWindow();
frmSetup& setupWindow();

/**
 * Runs the window's Form_Unload, hides the window and forgets it: its accessor makes a new one. The old one
 * is destroyed only when no handler can be using it any more. When no window is left to be seen, the main
 * window is shown, so that the program can always be ended by a person.
 */
void unload(Form& window);

/** Shows the main window when no other window is to be seen. */
void keepAWindowVisible();

/**
 * Brings the window to the front that a person is working in: the one that has the keyboard, or else the one
 * that lies over the others; with it the box or dialog that waits for an answer.
 */
void bringUpWindowInUse();

/** Drive path of the folder from which a file was attached the last time in this run; empty before the first.
 */
QString& attachFolder();

/** Owns the windows. One stands for as long as the accessors are used; a test may have one after the other.
 */
class LoadedWindows {
  public:
    LoadedWindows();
    ~LoadedWindows();
    LoadedWindows(const LoadedWindows&) = delete;
    LoadedWindows& operator=(const LoadedWindows&) = delete;

    struct Windows;

  private:
    std::unique_ptr<Windows> windows_;
};
