#include "tests/support/window_test.h"

#include "components/controls/mmcontrol.h"
#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/opening.h"
#include "email/protections.h"
#include "email/shared_settings.h"
#include "email/typed_host.h"
#include "platform/program.h"
#include "platform/text_printer.h"
#include "tests/support/application.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/wiring.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <ostream>

namespace support {

email::SettingsFields schoolSettings(const QString& mailServer) {
    email::SettingsFields fields = email::fieldsOf(email::Settings());
    fields.POPServer = mailServer;
    fields.SMTPServer = mailServer;
    fields.Institution = QStringLiteral("Example School");
    fields.PlayWav = QStringLiteral("yes");
    fields.ShowGetMail = QStringLiteral("yes");
    return fields;
}

WindowTest::WindowTest() : folderBefore_(std::filesystem::current_path()) {
    application();
    std::filesystem::current_path(folder.path());
    controls::replaceMessageBox([this](const controls::MessageBox& box) {
        boxes.push_back(box);
        if (whileBoxIsOpen) {
            whileBoxIsOpen(box);
        }
        return box.buttons == controls::MessageButtons::YesNo ? answer : controls::MessageAnswer::Ok;
    });
    platform::replaceEndProgram([this] { ++programEnds; });
    MCI::replaceWavePlayer([this](const QString& fileName) { sounds.push_back(fileName); });
    platform::replaceDefaultPrinter([this] {
        printed.emplace_back();
        return std::make_unique<RecordingPrinter>(printed.back());
    });
    forgetEverything();
}

WindowTest::~WindowTest() {
    windows_.reset();
    controls::replaceMessageBox({});
    platform::replaceEndProgram({});
    MCI::replaceWavePlayer({});
    platform::replaceDefaultPrinter({});
    std::filesystem::current_path(folderBefore_);
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        qunsetenv((std::string("BRINDLEWAKE_DRIVE_") + letter).c_str());
    }
}

void WindowTest::forgetEverything() {
    windows_.reset();
    windows_ = std::make_unique<LoadedWindows>();
    email::settings = {};
    email::derived = {};
    email::serversOfFile = {};
    email::mailbox = {};
    email::credentials = {};
    email::opening = {};
    email::protections = {};

    boxes.clear();
    sounds.clear();
    printed.clear();
    programEnds = 0;
}

void WindowTest::writeSettings(const email::SettingsFields& fields) {
    writeSettingsText(email::settingsFileText(fields, email::Settings()));
}

void WindowTest::writeSettingsText(const std::string& text) {
    folder.write("tolk.ini", text);
}

void WindowTest::startUp() {
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
}

void WindowTest::logIn(const QString& mailServer, const QString& userName) {
    writeSettings(schoolSettings(mailServer));
    startUp();
    loginWindow().tUser->setText(userName);
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
}

void WindowTest::doubleClick(int row) {
    auto* const grid = mainWindow().MailGrid;
    const QRect cell = grid->visualItemRect(grid->item(row - 1, 3));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
}

std::vector<QString> WindowTest::boxTexts() const {
    std::vector<QString> texts;
    for (const controls::MessageBox& box : boxes) {
        texts.push_back(box.text);
    }
    return texts;
}

} // namespace support

void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}
