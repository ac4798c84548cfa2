#pragma once

#include "platform/only_program.h"

#include <memory>

class QSocketNotifier;

/**
 * Lets only one of a user's programs work in a folder at a time. A second program that is started there has
 * the first one show its window, or says why it cannot, and ends.
 */
class SecondStart {
  public:
    /** Make it before the QApplication, which removes the desktop's activation token from the environment. */
    SecondStart();
    ~SecondStart();
    SecondStart(const SecondStart&) = delete;
    SecondStart& operator=(const SecondStart&) = delete;

    /**
     * Finds out whether this is a second start. Call it before anything in the folder is read or written.
     * Returns the status to end the process with when it is. Returns nothing when this is the first program,
     * which from now on answers later starts.
     */
    std::optional<int> statusToEndWith();

  private:
    void answerLaterStarts();

    platform::OnlyProgram::Request request_;
    platform::OnlyProgram only_;
    std::unique_ptr<QSocketNotifier> later_;
};
