#pragma once

#include "platform/private_file.h"
#include "platform/user_folders.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace platform {

/**
 * Sees to it that of one user's programs only one works in the current folder at a time. Programs of
 * different users, and those in other folders, know nothing of one another.
 *
 *     OnlyProgram only;
 *     switch (only.start(request)) { ... }
 *
 * The first one holds a lock until its process ends, however that ends, and listens at a socket for those
 * that come later. Both lie in a folder of the user's own (runtimeFolder()), since the folder that the
 * program works in may be closed to writing; they are named by the number of that folder, so that no other
 * name of it, such as a link, leads past them.
 */
class OnlyProgram {
  public:
    enum class Start {
        /** No other program works here; or that cannot be found out, since no folder takes a lock. */
        First,
        /** Another one works here and has shown its window. */
        Shown,
        /** Another one works here and cannot show its window, or does not answer. */
        NotShown
    };

    /** What a later start tells the first program. Both are limited to some hundred bytes. */
    struct Request {
        /** The screen that the person sits at. */
        std::string screen;
        /** What lets the first program's window come to the front, where the desktop has given such a thing.
         */
        std::string token;
    };

    /** How long a later start waits for the first program to answer. */
    static constexpr std::chrono::milliseconds kTimeout{5000};

    /** Takes the lock, or asks the program that has it to show its window. Call it once. */
    Start start(const Request& request, std::chrono::milliseconds timeout = kTimeout);

    /** For the first program: readable when a later start asks. -1 when none can ask. */
    int listener() const noexcept { return listener_.number(); }

    /** Answers the later start that asks. The function shows the window and tells whether it could. */
    void answer(const std::function<bool(const Request&)>& show);

  private:
    bool takeLock();
    void listen();
    std::optional<Start> ask(const Request& request, std::chrono::milliseconds timeout) const;

    std::optional<UserFolder> place_;
    std::string name_;
    FileDescriptor lock_;
    FileDescriptor listener_;
};

} // namespace platform
