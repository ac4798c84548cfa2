#pragma once

#include <QApplication>

/**
 * The application object. connectHandler() traps the errors of handlers. This traps what Qt itself raises
 * while it handles an event: std::bad_alloc, as for a clipboard that holds a gigabyte or a picture of a long
 * text. It is reported as error 7, and the program goes on.
 */
class Application : public QApplication {
  public:
    Application(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

  private:
    bool reporting_ = false;
};
