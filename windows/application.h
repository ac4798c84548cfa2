#pragma once

#include <QApplication>

/**
 * The application object. What a handler raises is trapped where the handler is connected; this traps what Qt
 * itself raises on its way, which is want of memory: a clipboard with a gigabyte in it, a picture of text. It
 * is reported as error 7, and the program goes on.
 */
class Application : public QApplication {
  public:
    Application(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

  private:
    bool reporting_ = false;
};
