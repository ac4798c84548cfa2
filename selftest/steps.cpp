#include "app/self_test.h"
#include "selftest/hands.h"
#include "selftest/round.h"
#include "selftest/sample_mail.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableWidget>

#include <string_view>

namespace selftest {

namespace {
QString text(const char* words) {
    return QString::fromUtf8(words);
}

QTableWidget& list() {
    return control<QTableWidget>("frmMain", "MailGrid");
}

constexpr int kFrom = 2;
constexpr int kSubject = 3;

QString cell(int row, int column) {
    const QTableWidgetItem* const item = list().item(row, column);
    return item == nullptr ? QString() : item->text().trimmed();
}

void seeLoginWindow(Scene& /*scene*/) {
    requireText(QStringLiteral("the title"), window("frmLogin").windowTitle(),
                QStringLiteral("Self-Test E-Mail"));
    require(!control<QLabel>("frmLogin", "picLogo").pixmap().isNull(),
            QStringLiteral("the logo, a JPEG, is not shown"));
}

void playSound(Scene& scene) {
    const QString why = scene.order.playSound(QStringLiteral("Gotmail.wav"));
    if (!why.isEmpty()) {
        throw NotHere(why);
    }
}

void typeWrongPassword(Scene& scene) {
    scene.boxes.expect(QStringLiteral("Password Or User Name Wrong, Please Try Again 20172"));
    type("frmLogin", "tUser", text(kMember));
    type("frmLogin", "tpwd", QStringLiteral("another password"));
    press("frmLogin", "cmdLogin");
    require(isShown("frmLogin"), QStringLiteral("the login window has gone"));
}

void logIn(Scene& /*scene*/) {
    type("frmLogin", "tUser", text(kMember));
    type("frmLogin", "tpwd", text(kPassword));
    press("frmLogin", "cmdLogin");
    require(!isShown("frmLogin"), QStringLiteral("the login window has stayed"));
    requireText(QStringLiteral("the title"), window("frmMain").windowTitle(),
                QStringLiteral("Welcome member To Self-Test E-Mail"));
}

void seeList(Scene& /*scene*/) {
    requireText(QStringLiteral("the number of rows"), QString::number(list().rowCount()),
                QStringLiteral("2"));
    requireText(QStringLiteral("a subject"), cell(0, kSubject), text(kTextSubject));
    requireText(QStringLiteral("a subject"), cell(1, kSubject), text(kAttachmentSubject));
    require(cell(0, kFrom).contains(QStringLiteral("Ann")),
            QStringLiteral("a sender is \"%1\"").arg(cell(0, kFrom)));
}

void openAndRead(int row, const char* subject, const char* words) {
    openRow(list(), row);
    requireText(QStringLiteral("the subject"), control<QLineEdit>("frmFrom", "txtSubject").text(),
                text(subject));
    waitUntil(
        [words] {
            return control<QPlainTextEdit>("frmFrom", "tMessage").toPlainText().contains(text(words));
        },
        QStringLiteral("the text is not shown"));
}

void closeMessage() {
    press("frmFrom", "cmdDone");
    require(!isShown("frmFrom"), QStringLiteral("the message window has stayed"));
}

void openMessage(Scene& /*scene*/) {
    openAndRead(1, kAttachmentSubject, kText);
}

/** Saves the only attachment of the opened message. */
void saveAs(Scene& scene, const char* name) {
    const QString file = text(name);
    if (const auto* const names = window("frmFrom").findChild<QComboBox*>(QStringLiteral("cboAttached"))) {
        requireText(QStringLiteral("the attachment"), names->currentText(),
                    file + QStringLiteral(" (%1 bytes)").arg(attachmentBytes().size()));
    } else {
        requireText(QStringLiteral("the attachment"), control<QLineEdit>("frmFrom", "txtAttachments").text(),
                    file);
    }
    scene.boxes.expect(QStringLiteral("Attachment has been saved to: C:\\SAVED\\") + file);
    press("frmFrom", "cmdSave");
    require(bytesOf(scene.places.saved / name) == attachmentBytes(),
            QStringLiteral("the saved file has other bytes"));
}

void saveAttachment(Scene& scene) {
    saveAs(scene, kAttachmentName);
}

void printIntoFile(Scene& scene) {
    scene.order.printInto(QString::fromStdString(scene.places.printed));
    press("frmFrom", "CmdPrint");
    const std::string printed = bytesOf(scene.places.printed);
    require(std::string_view(printed).substr(0, 5) == "%PDF-" && printed.find("%%EOF") != std::string::npos,
            QStringLiteral("the file is no PDF"));
    require(printed.find("/Font") != std::string::npos, QStringLiteral("no letters are in the file"));
}

void findPrinter(Scene& scene) {
    if (scene.order.printerName().isEmpty()) {
        throw NotHere(QStringLiteral("there is no default printer"));
    }
}

void closeOpenedMessage(Scene& /*scene*/) {
    closeMessage();
}

void fillLetter() {
    press("frmMain", "cmdCmpose");
    type("frmSend", "tTo", QStringLiteral("member@example.org"));
    type("frmSend", "tSubject", text(kSentSubject));
    type("frmSend", "tMessage", text(kSentText));
}

void send(Scene& scene) {
    scene.boxes.expect(QStringLiteral("Your message has been sent."));
    press("frmSend", "cmdSndit");
    require(!isShown("frmSend"), QStringLiteral("the compose window has stayed"));
    requireText(QStringLiteral("the number of messages at the server"),
                QString::number(scene.servers.messageCount()), QStringLiteral("3"));
}

void sendWithAttachment(Scene& scene) {
    const QString path = QString::fromStdString(scene.places.drive / kSentName);
    QFile file(path);
    const std::string bytes = attachmentBytes();
    require(file.open(QIODevice::WriteOnly) &&
                file.write(bytes.data(), static_cast<qint64>(bytes.size())) > 0 && file.flush(),
            QStringLiteral("%1: %2").arg(path, file.errorString()));
    fillLetter();
    scene.boxes.chooseFile(path);
    press("frmSend", "cmdAttach");
    requireText(QStringLiteral("the attachment"), control<QLineEdit>("frmSend", "txtAttachment").text(),
                QStringLiteral("C:\\") + text(kSentName));
    send(scene);
}

void sendWithoutAttachment(Scene& scene) {
    fillLetter();
    send(scene);
}

void getNewMail(Scene& /*scene*/) {
    press("frmMain", "cmdGetMail");
    requireText(QStringLiteral("the number of rows"), QString::number(list().rowCount()),
                QStringLiteral("3"));
    requireText(QStringLiteral("the new subject"), cell(2, kSubject), text(kSentSubject));
}

void readNewMail(Scene& scene) {
    openAndRead(2, kSentSubject, kSentText);
    saveAs(scene, kSentName);
    closeMessage();
}

void deleteMessage(Scene& scene) {
    clickRow(list(), 0);
    scene.boxes.expect(QStringLiteral("Are you sure you want to delete this message?"), Boxes::Answer::Yes);
    press("frmMain", "cmdDelete");
    requireText(QStringLiteral("the number of rows"), QString::number(list().rowCount()),
                QStringLiteral("2"));
    requireText(QStringLiteral("the first subject"), cell(0, kSubject), text(kAttachmentSubject));
    requireText(QStringLiteral("the number of messages at the server"),
                QString::number(scene.servers.messageCount()), QStringLiteral("2"));
}

void seeEncryption(Scene& /*scene*/) {
    control<QAction>("frmMain", "mnuHelp").trigger();
    for (const char* const name : {"lblPOPServer", "lblSMTPServer"}) {
        const QString told = control<QLabel>("frmAbout", name).text();
        require(told.contains(QStringLiteral("encrypted, certificate valid (TLS")),
                QStringLiteral("About tells: %1").arg(told));
    }
    press("frmAbout", "cmdOkAbout");
}
} // namespace

std::vector<Step> wholeRound() {
    constexpr auto goOn = Step::AfterFailure::GoOn;
    return {
        {"show the login window", seeLoginWindow, goOn},
        {"play the sound", playSound, goOn},
        {"refuse a wrong password", typeWrongPassword},
        {"log in", logIn},
        {"list the messages", seeList},
        {"open a message", openMessage},
        {"save an attachment", saveAttachment, goOn},
        {"print into a file", printIntoFile, goOn},
        {"find a printer", findPrinter, goOn},
        {"close the message", closeOpenedMessage},
        {"send a message with an attachment", sendWithAttachment},
        {"get new mail", getNewMail},
        {"read the new message", readNewMail},
        {"delete a message", deleteMessage},
    };
}

std::vector<Step> encryptedRound() {
    return {
        {"log in, encrypted", logIn},
        {"list the messages, encrypted", seeList},
        {"send a message, encrypted", sendWithoutAttachment},
        {"tell of the encryption", seeEncryption},
    };
}

} // namespace selftest
