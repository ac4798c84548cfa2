#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace bench {

/** A program that was started here; it is ended with its owner. */
class Process {
  public:
    using Clock = std::chrono::steady_clock;

    /** Starts the program with its arguments, which end with a null pointer. \throws std::system_error */
    explicit Process(char* const* arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /** When the program was started, just before exec. */
    Clock::time_point started() const noexcept { return started_; }

    /**
     * The value of a line such as "Private_Dirty:  12 kB" in a file of the process under /proc, in kibibytes.
     * \throws std::runtime_error when there is none.
     */
    long kibibytes(const char* file, const std::string& name) const;

    /** Number of other processes that have a file mapped whose path holds the text. */
    int othersThatMap(std::string_view text) const;

    /** Waits until the process has used no processor time for a while. \throws std::runtime_error */
    void waitUntilIdle() const;

  private:
    std::string pathOf(const char* file) const;
    long processorTicks() const;

    Clock::time_point started_;
    pid_t id_ = 0;
};

} // namespace bench
