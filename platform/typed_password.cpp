#include "platform/typed_password.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace platform {

namespace {
volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void rememberSignal(int number) {
    caughtSignal = number;
}

/** Lets signals that would end the program interrupt a read() instead, for as long as it lives. */
class SignalsCaught {
  public:
    SignalsCaught() {
        caughtSignal = 0;

        struct sigaction remember {};

        remember.sa_handler = rememberSignal;
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals.at(i), &remember, &before_.at(i));
        }
    }

    ~SignalsCaught() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals.at(i), &before_.at(i), nullptr);
        }
    }

    SignalsCaught(const SignalsCaught&) = delete;
    SignalsCaught& operator=(const SignalsCaught&) = delete;

  private:
    static constexpr std::array<int, 5> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    std::array<struct sigaction, 5> before_{};
};

/** Keeps a terminal from showing what is typed, for as long as it lives. */
class EchoOff {
  public:
    explicit EchoOff(int terminal) : terminal_(terminal) {
        if (::tcgetattr(terminal, &before_) == 0) {
            termios silent = before_;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            silent.c_lflag |= ECHONL;
            isOff_ = ::tcsetattr(terminal, TCSAFLUSH, &silent) == 0;
        }
    }

    ~EchoOff() {
        if (isOff_) {
            ::tcsetattr(terminal_, TCSAFLUSH, &before_);
        }
    }

    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

    bool isOff() const noexcept { return isOff_; }

  private:
    int terminal_;
    termios before_{};
    bool isOff_ = false;
};
} // namespace

std::optional<std::string> readSecretLine(int descriptor) {
    std::string line;
    // A string that grows leaves copies of its bytes behind.
    line.reserve(kMaximumPasswordBytes);
    for (char character = '\0'; ::read(descriptor, &character, 1) == 1 && character != '\n';) {
        if (line.size() == kMaximumPasswordBytes) {
            return std::nullopt;
        }
        line.push_back(character);
    }
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line.empty() ? std::nullopt : std::optional(std::move(line));
}

std::optional<std::string> askForPassword(int terminal, const std::string& prompt) {
    std::optional<std::string> password;
    {
        const SignalsCaught signals;
        const EchoOff silence(terminal);
        if (!silence.isOff()) {
            return std::nullopt;
        }
        static_cast<void>(std::fputs(prompt.c_str(), stderr));
        static_cast<void>(std::fflush(stderr));
        password = readSecretLine(terminal);
    }
    if (const int number = caughtSignal; number != 0) {
        // Now it may do what it would have done.
        static_cast<void>(std::raise(number));
        return std::nullopt;
    }
    return password;
}

} // namespace platform
