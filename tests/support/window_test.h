#pragma once

#include "components/controls/message_box.h"
#include "email/settings_file.h"
#include "tests/support/environment.h"
#include "tests/support/recording_printer.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/waiting.h"
#include "windows/windows.h"

#include <QString>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace support {

/** Settings as an administrator would have prepared them, with the mail server of the test. */
email::SettingsFields schoolSettings(const QString& mailServer);

/**
 * A test on the program's own windows. Each has a state of its own, a current folder of its own without any
 * file in it, and stand-ins for what a test cannot have: message boxes, sounds and printed texts are
 * remembered, and the end of the program is counted while the handler goes on and returns.
 */
class WindowTest : public testing::Test {
  public:
    ~WindowTest() override;
    WindowTest(const WindowTest&) = delete;
    WindowTest& operator=(const WindowTest&) = delete;

  protected:
    WindowTest();

    /** Writes tolk.ini into the current folder. */
    void writeSettings(const email::SettingsFields& fields);
    void writeSettingsText(const std::string& text);

    /** Starts the program as main() does. */
    void startUp();

    /** Ends all windows and forgets all state, boxes, sounds and ends: as if the program was never started.
     */
    void forgetEverything();

    /** Starts the program with these settings, types the name and the password, and presses Get Mail. */
    void logIn(const QString& mailServer, const QString& userName = QStringLiteral("ann"));

    /** Double-clicks a row of the list, as a person would. */
    static void doubleClick(int row);

    /** The texts of all boxes so far. */
    std::vector<QString> boxTexts() const;

    TemporaryFolder folder;
    /** Where letters are kept that are being written. */
    TemporaryFolder stateHome;
    std::vector<controls::MessageBox> boxes;
    /** Runs while a box is open; takes the box. */
    std::function<void(const controls::MessageBox&)> whileBoxIsOpen;
    controls::MessageAnswer answer = controls::MessageAnswer::Yes;
    std::vector<QString> sounds;
    /** One for each time that something was printed; a list, since printers keep hold of theirs. */
    std::list<PrintedDocument> printed;
    int programEnds = 0;

  private:
    std::string folderBefore_;
    EnvironmentVariable stateHomeVariable_{"XDG_STATE_HOME", stateHome.path().string()};
    std::unique_ptr<LoadedWindows> windows_;
};

} // namespace support

/** Lets GoogleTest print texts. */
void PrintTo(const QString& text, std::ostream* stream);
