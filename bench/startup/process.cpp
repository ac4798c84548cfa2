#include "bench/startup/process.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace bench {

namespace {
using std::chrono::milliseconds;

constexpr milliseconds kLook{100};
constexpr int kLooksWithoutWork = 6;
constexpr int kMostLooks = 100;
} // namespace

Process::Process(char* const* arguments) : started_(Clock::now()) {
    const int error = posix_spawn(&id_, arguments[0], nullptr, nullptr, arguments, environ);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), arguments[0]);
    }
}

Process::~Process() {
    kill(id_, SIGTERM);
    waitpid(id_, nullptr, 0);
}

std::string Process::pathOf(const char* file) const {
    return "/proc/" + std::to_string(id_) + '/' + file;
}

long Process::kibibytes(const char* file, const std::string& name) const {
    std::ifstream lines(pathOf(file));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ':')) {
            return std::stol(line.substr(name.size() + 1));
        }
    }
    throw std::runtime_error("no " + name + " in " + pathOf(file));
}

int Process::othersThatMap(std::string_view text) const {
    int others = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos || name == std::to_string(id_)) {
            continue;
        }
        // A process may end meanwhile, or belong to somebody else: then it has no lines.
        std::ifstream maps(entry.path() / "maps");
        for (std::string line; std::getline(maps, line);) {
            if (line.find(text) != std::string::npos) {
                ++others;
                break;
            }
        }
    }
    return others;
}

long Process::processorTicks() const {
    std::ifstream file(pathOf("stat"));
    std::string text;
    std::getline(file, text);
    // The program's name, in parentheses, may hold spaces; eleven fields lie between it and the times.
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string skipped;
    for (int field = 0; field < 11; ++field) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    if (!(fields >> user >> system)) {
        throw std::runtime_error("the program has ended");
    }
    return user + system;
}

void Process::waitUntilIdle() const {
    long ticks = processorTicks();
    int unchanged = 0;
    for (int look = 0; look < kMostLooks; ++look) {
        std::this_thread::sleep_for(kLook);
        const long now = processorTicks();
        unchanged = now == ticks ? unchanged + 1 : 0;
        ticks = now;
        if (unchanged == kLooksWithoutWork) {
            return;
        }
    }
    throw std::runtime_error("the program does not come to rest");
}

} // namespace bench
