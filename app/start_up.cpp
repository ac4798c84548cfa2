#include "components/controls/message_box.h"
#include "email/box_texts.h"
#include "email/mailbox.h"
#include "email/settings_file.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "mailbox/mailbox_list.h"
#include "platform/program.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "windows/frmAbout.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSetup.h"
#include "windows/windows.h"

#include <QPushButton>

#include <array>
#include <cmath>

namespace {
void prepareColumns(MSFlexGridLib::MSFlexGrid& grid) {
    // The fractions add up to 1, so the columns fill the grid. They keep these widths when it is resized.
    constexpr std::array<double, 5> fractions = {0.05, 0.11, 0.365, 0.33, 0.145};
    constexpr std::array<int, 5> alignments = {1, 1, 1, 1, 0};
    const double width = grid.usableWidth();
    int column = 0;
    for (const double fraction : fractions) {
        grid.setColWidth(column++, static_cast<int>(std::lround(width * fraction)));
    }
    column = 0;
    for (const int alignment : alignments) {
        grid.setColAlignment(column++, alignment);
    }
    writeTitles();
}

void assignDefaults() {
    email::settings = email::Settings();
    const QString directory = email::derived.WindowsDirectory;
    email::derived = email::DerivedValues();
    email::derived.WindowsDirectory = directory;
}

void readSettingsFile() {
    platform::SequentialInput file{QLatin1String(email::kSettingsFileName)};
    email::readSettings([&file] { return file.nextLine(); }, email::settings, email::derived,
                        [](bool visible) { loginWindow().cmdSetup->setVisible(visible); });
}

void applySettings(frmMain& main) {
    const QString title = email::programTitle();
    // The message window and the compose window take this title when they are made.
    email::derived.WindowTitle = title;
    aboutWindow().setWindowTitle(title);
    loginWindow().setWindowTitle(title);
    main.setWindowTitle(title);
    main.cmdGetMail->setVisible(email::isYes(email::settings.ShowGetMail));
    email::mailbox.StartUpNumbers.fill(0);
}

void reportStartUpFailure(frmMain& main, int error) {
    if (error == platform::errors::FileNotFound) {
        controls::showMessageBox({email::boxOfFailedStart(error), QStringLiteral("Brindlewake"),
                                  controls::MessageIcon::Exclamation, controls::MessageButtons::Ok});
        setupWindow().bringUp();
        main.hide();
        return;
    }
    controls::showMessage(email::boxOfFailedStart(error), QStringLiteral("Brindlewake"));
}
} // namespace

void frmMain::Form_Load() {
    email::derived.WindowsDirectory = email::GetWinDirectory();
    UpdateListControls();
    showTotals();
    prepareColumns(*MailGrid);
    assignDefaults();
    const int error = platform::errorNumberOf([this] {
        readSettingsFile();
        applySettings(*this);
        loginWindow().bringUp();
        hide();
    });
    if (error != 0) {
        reportStartUpFailure(*this, error);
    }
}

void frmMain::Form_Unload() {
    platform::endProgram();
}

void frmMain::cmdExit_Click() {
    platform::endProgram();
}

void frmMain::mnuHelp_Click() {
    // The window was loaded when the program started, before any connection.
    aboutWindow().showProtections();
    aboutWindow().bringUp();
}
