#include "selftest/watched_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace selftest {

namespace {
using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/** Cuts what has come into notes. */
class NoteReader {
  public:
    explicit NoteReader(const std::function<void(const Note&)>& take) : take_(take) {}

    void add(std::string_view bytes) {
        line_ += bytes;
        for (auto end = line_.find('\n'); end != std::string::npos; end = line_.find('\n')) {
            if (const auto note = noteOf(std::string_view(line_).substr(0, end))) {
                take_(*note);
            }
            line_.erase(0, end + 1);
        }
    }

  private:
    const std::function<void(const Note&)>& take_;
    std::string line_;
};

/** Reads until the other end is closed; returns why that was given up, if it was. */
std::optional<std::string> readAll(int descriptor, const Interruptions& interruptions, NoteReader& notes,
                                   Clock::time_point until) {
    for (;;) {
        const bool inTime = interruptions.wait(descriptor, until);
        if (interruptions.signal() != 0) {
            return "interrupted";
        }
        if (!inTime) {
            return "it was not done within the time for the whole test";
        }
        std::array<char, 4096> bytes{};
        const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
        if (count == 0) {
            return std::nullopt;
        }
        if (count > 0) {
            notes.add({bytes.data(), static_cast<std::size_t>(count)});
        }
    }
}

std::string faultOf(int status) {
    if (WIFSIGNALED(status)) {
        return std::string("the program was ended by a signal: ") + ::strsignal(WTERMSIG(status));
    }
    const int code = WEXITSTATUS(status);
    return code == EXIT_SUCCESS || code == EXIT_FAILURE
               ? std::string()
               : "the program has ended with status " + std::to_string(code);
}

int waitFor(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

[[noreturn]] void work(const std::function<int(Teller&)>& function, int pipe, pid_t watcher) {
    // Nobody is to be left behind when the watcher is ended by force.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != watcher) {
        std::_Exit(EXIT_FAILURE);
    }
    std::signal(SIGPIPE, SIG_DFL);
    Teller teller(pipe);
    int status = EXIT_FAILURE;
    try {
        status = function(teller);
    } catch (const std::exception& error) {
        teller.end(Outcome::Failed, error.what());
    }
    std::_Exit(status);
}
} // namespace

std::string watchProcess(const std::function<int(Teller&)>& function,
                         const std::function<void(const Note&)>& take, const Interruptions& interruptions,
                         Clock::time_point until) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        fail("pipe");
    }
    // The other process would write it a second time.
    static_cast<void>(std::fflush(stdout));
    // A signal that is none of these may end the waiting with nothing to read.
    ::fcntl(pipe[0], F_SETFL, O_NONBLOCK);
    const pid_t watcher = ::getpid();
    const pid_t process = ::fork();
    if (process < 0) {
        fail("fork");
    }
    if (process == 0) {
        interruptions.leave();
        ::close(pipe[0]);
        work(function, pipe[1], watcher);
    }
    ::close(pipe[1]);
    NoteReader notes(take);
    const auto givenUp = readAll(pipe[0], interruptions, notes, until);
    if (givenUp) {
        ::kill(process, SIGKILL);
    }
    const int status = waitFor(process);
    ::close(pipe[0]);
    return givenUp.value_or(faultOf(status));
}

} // namespace selftest
