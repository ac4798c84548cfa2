#pragma once

#include <QString>

#include <memory>

class Form;
class frmAbout;
class frmFind;
class frmFrom;
class frmLogin;
class frmMain;
class frmSend;
class frmSetup;

// The program's windows, each reached through its accessor: made at first use, hidden, and loaded
// (Form_Load has run) before the accessor returns.

frmAbout& aboutWindow();
frmFind& findWindow();
frmFrom& messageWindow();
frmLogin& loginWindow();
frmMain& mainWindow();
frmSend& composeWindow();
frmSetup& setupWindow();

/**
 * Runs the window's Form_Unload, hides the window and forgets it: its accessor makes a new one. The old one
 * is destroyed only when no handler can be using it any more. When no window is visible then, the main window
 * is shown, so that the user can always end the program.
 */
void unload(Form& window);

/** Shows the main window when no window is visible. */
void keepAWindowVisible();

/**
 * Brings the window to the front that the user is working in: the active one, or else the topmost one. Its
 * message box or dialog, if one is open, comes to the front instead.
 */
void bringUpWindowInUse();

/** Drive path, with "\" at its end, of the folder of the file attached last in this run; empty before. */
QString& attachFolder();

/** Owns the windows. It must exist while the accessors are used. Tests may make several, one at a time. */
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
