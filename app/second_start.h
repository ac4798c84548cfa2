#pragma once

#include "platform/only_program.h"

#include <memory>

class QSocketNotifier;

/**
 * One program of a user works in a folder at a time. A second start there shows the window of the first, or
 * says why it cannot, and ends.
 */
class SecondStart {
  public:
    /** To be made before the QApplication, which takes what the desktop has left in the environment. */
    SecondStart();
    ~SecondStart();
    SecondStart(const SecondStart&) = delete;
    SecondStart& operator=(const SecondStart&) = delete;

    /**
     * Finds out whether this is a second start, before anything in the folder is read or written.
     * Returns the status that the process ends with then; nothing when this is the first one, which from now
     * on answers the later ones.
     */
    std::optional<int> statusToEndWith();

  private:
    void answerLaterStarts();

    platform::OnlyProgram::Request request_;
    platform::OnlyProgram only_;
    std::unique_ptr<QSocketNotifier> later_;
};
