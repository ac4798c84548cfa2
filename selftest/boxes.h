#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <deque>
#include <functional>

class QFileDialog;
class QMessageBox;

namespace selftest {

/** Answers the boxes that the program shows, as a person would, and knows which are due. */
class Boxes {
  public:
    enum class Answer { Ok, Yes };

    /** What the function is told of: the text of each box that was not due, which has been closed. */
    explicit Boxes(std::function<void(const QString& text)> wrongBox);

    /** The next box is due to have this text. */
    void expect(const QString& text, Answer answer = Answer::Ok) { due_.push_back({text, answer}); }

    /** The next dialog for a file gets this one, a path of the system's. */
    void chooseFile(const QString& path) { fileToChoose_ = path; }

    /** What was due and has not come, in words; empty when everything has. Nothing is due any more. */
    QString takeMissing();

  private:
    struct Due {
        QString text;
        Answer answer;
    };

    void look();
    void answer(QMessageBox& box);
    void answer(QFileDialog& dialog);

    std::function<void(const QString&)> wrongBox_;
    std::deque<Due> due_;
    QString fileToChoose_;
    QTimer timer_;
};

} // namespace selftest
