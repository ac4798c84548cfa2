#include <QApplication>
#include <QMainWindow>
#include <QTableWidget>

// What start-up is compared with: the least that a program with one window and a table can be.
int main(int argumentCount, char** arguments) {
    const QApplication application(argumentCount, arguments);
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Empty window"));
    window.setCentralWidget(new QTableWidget(1, 5));
    window.resize(640, 400);
    window.show();
    return QApplication::exec();
}
