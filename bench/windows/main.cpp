// Uses the program's own windows as a person does, on a real display, and takes the time from the press of a
// button to the picture that it was pressed for:
//
//     bench_windows entering    Get Mail, until the list is painted, which may be empty
//     bench_windows listing     Get Mail, until the list stands there with all its rows
//     bench_windows opening     double click on the first message, until its window has the text
//     bench_windows checking    Get New Mail, until the box that says there is none
//     bench_windows deleting    Delete and Yes, until the list stands there without the message
//     bench_windows reading     double click on the first message, until its window; Save, until the box
//     bench_windows sending     Send, until the box; sends D:\FILE.BIN to bob@example.org
//
// The current folder holds the settings. Windows, handlers and libraries are those of the program, and main()
// begins as the program's does.

#include "bench/peak_memory.h"
#include "bench/windows/stopwatch.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {
using bench::Stopwatch;
using bench::Taken;

void tell(const char* what, Taken taken) {
    std::cout << what << "-seconds " << taken.wait.count() << ' ' << what << "-processor "
              << taken.processor.count() << ' ';
}

/** What the process had at most before, in kibibytes, and what it has by now. */
void tellMemory(long peakBefore) {
    std::cout << "memory-before " << peakBefore << " memory-after " << bench::peakMemory() << ' ';
}

/** Lets all that is still on its way come to rest, so that it does not count for what is timed next. */
void settle() {
    constexpr int milliseconds = 200;
    QTest::qWait(milliseconds);
}

void press(QPushButton* button) {
    QTest::mouseClick(button, Qt::LeftButton);
}

/** Presses a button that ends in a box with this text; the box is answered once it can be read. */
Taken pressUntilBox(QPushButton* button, const QString& text) {
    QString read;
    Stopwatch stopwatch([](QWidget& widget) { return qobject_cast<QMessageBox*>(&widget) != nullptr; },
                        [&read](QWidget& widget) {
                            auto& box = static_cast<QMessageBox&>(widget);
                            read = box.text();
                            box.accept();
                        });
    press(button);
    const Taken taken = stopwatch.wait();
    if (!read.startsWith(text)) {
        throw std::runtime_error(read.toStdString());
    }
    return taken;
}

Taken logIn() {
    frmLogin& login = loginWindow();
    settle();
    QTest::keyClicks(login.tUser, QStringLiteral("reader"));
    QTest::keyClicks(login.tpwd, QStringLiteral("demo"));
    settle();
    Stopwatch stopwatch([](QWidget& widget) {
        const MSFlexGridLib::MSFlexGrid* const grid = mainWindow().MailGrid;
        // An empty list stays disabled, but a letter can be written then.
        const bool isDone = grid->isEnabled() || (mainWindow().isVisible() && grid->Rows() <= 2 &&
                                                  mainWindow().cmdCmpose->isEnabled());
        return &widget == grid->viewport() && grid->redraws() && isDone;
    });
    press(login.cmdLogin);
    return stopwatch.wait();
}

void enter() {
    tell("entering", logIn());
}

void list() {
    const long peakBefore = bench::peakMemory();
    const Taken taken = logIn();
    const int rows = mainWindow().MailGrid->Rows() - 1;
    if (mainWindow().MailGrid->TextMatrix(rows, 0).trimmed() != QString::number(rows)) {
        throw std::runtime_error("the last row is missing");
    }
    tell("listing", taken);
    std::cout << "rows " << rows << ' ';
    tellMemory(peakBefore);
}

/** Chooses the first message with the mouse. */
QPoint chooseFirst(const MSFlexGridLib::MSFlexGrid& grid) {
    const QPoint cell = grid.visualItemRect(grid.item(0, 3)).center();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, cell);
    return cell;
}

Taken openFirst() {
    const MSFlexGridLib::MSFlexGrid& grid = *mainWindow().MailGrid;
    const QPoint cell = chooseFirst(grid);
    Stopwatch stopwatch([](QWidget& widget) {
        const auto* const window = dynamic_cast<frmFrom*>(widget.window());
        return window != nullptr && &widget == window->tMessage->viewport() &&
               !window->tMessage->shownText().isEmpty();
    });
    QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, cell);
    return stopwatch.wait();
}

void open() {
    logIn();
    settle();
    tell("opening", openFirst());
}

void check() {
    logIn();
    settle();
    tell("checking", pressUntilBox(mainWindow().cmdGetMail, QStringLiteral("You have no new mail.")));
}

void remove() {
    logIn();
    settle();
    const MSFlexGridLib::MSFlexGrid& grid = *mainWindow().MailGrid;
    const int rows = grid.Rows();
    chooseFirst(grid);
    std::optional<Stopwatch> deletion;
    // The time begins when the question is answered, not when it is asked.
    Stopwatch question([](QWidget& widget) { return qobject_cast<QMessageBox*>(&widget) != nullptr; },
                       [&](QWidget& widget) {
                           deletion.emplace([&grid, rows](QWidget& painted) {
                               return &painted == grid.viewport() && grid.Rows() == rows - 1 &&
                                      grid.isEnabled();
                           });
                           static_cast<QMessageBox&>(widget).button(QMessageBox::Yes)->click();
                       });
    press(mainWindow().cmdDelete);
    question.wait();
    tell("deleting", deletion.value().wait());
}

void read() {
    logIn();
    settle();
    const long peakBefore = bench::peakMemory();
    tell("opening", openFirst());
    settle();
    tell("saving", pressUntilBox(messageWindow().cmdSave, QStringLiteral("Attachment has been saved to:")));
    tellMemory(peakBefore);
}

void send() {
    logIn();
    press(mainWindow().cmdCmpose);
    frmSend& compose = composeWindow();
    compose.tTo->setText(QStringLiteral("bob@example.org"));
    compose.tSubject->setText(QStringLiteral("A file"));
    compose.tMessage->setBytes("See the file.");
    compose.txtAttachment->setText(QStringLiteral("D:\\FILE.BIN"));
    settle();
    const long peakBefore = bench::peakMemory();
    tell("sending", pressUntilBox(compose.cmdSndit, QStringLiteral("Your message has been sent.")));
    tellMemory(peakBefore);
}

struct Job {
    std::string_view name;
    void (*work)();
};

constexpr std::array<Job, 7> kJobs{{{"entering", enter},
                                    {"listing", list},
                                    {"opening", open},
                                    {"checking", check},
                                    {"deleting", remove},
                                    {"reading", read},
                                    {"sending", send}}};

void run(const Job& job) {
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
    job.work();
    std::cout << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    std::signal(SIGXFSZ, SIG_IGN);
    const QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("Brindlewake"));
    QApplication::setQuitOnLastWindowClosed(false);
    const std::string_view asked = argumentCount == 2 ? arguments[1] : "";
    const auto* const job = std::ranges::find(kJobs, asked, &Job::name);
    if (job == kJobs.end()) {
        std::cerr << "usage: bench_windows entering|listing|opening|checking|deleting|reading|sending\n";
        return 2;
    }
    const LoadedWindows windows;
    try {
        run(*job);
    } catch (const std::exception& error) {
        std::cerr << "bench_windows: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
