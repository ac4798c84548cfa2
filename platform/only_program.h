#pragma once

#include "platform/private_file.h"
#include "platform/user_folders.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace platform {

/**
 * Lets only one of a user's programs work in the current folder at a time. Programs of different users, and
 * those in other folders, do not affect one another.
 *
 *     OnlyProgram only;
 *     switch (only.start(request)) { ... }
 *
 * The first program holds a lock until its process ends, however that ends, and listens at a socket for those
 * that come later. Both lie in a folder of the user's own (runtimeFolder()), since the current folder may be
 * closed to writing. They are named by the current folder's number, so that another path to it, such as a
 * link, leads to the same lock.
 */
class OnlyProgram {
  public:
    enum class Start {
        /** No other program works here; or this cannot be found out, since no folder takes a lock. */
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
        /**
         * The desktop's permission for the first program's window to come to the front; empty where the
         * desktop gave none.
         */
        std::string token;
    };

    /**
     * True when a program works in the current folder. Takes no lock and asks nobody: the system's own list
     * of locks tells.
     */
    static bool worksHere();

    /** How long a later start waits for the first program to answer. */
    static constexpr std::chrono::milliseconds kTimeout{5000};

    /** Takes the lock, or asks the program that has it to show its window. Call it once. */
    Start start(const Request& request, std::chrono::milliseconds timeout = kTimeout);

    /** The first program's socket, readable when a later start asks; -1 when none can ask. */
    int listener() const noexcept { return listener_.number(); }

    /** Answers the later start that asks. `show` shows the window and returns whether it could. */
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
