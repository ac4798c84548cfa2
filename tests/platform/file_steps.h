#pragma once

#include <optional>
#include <string>
#include <vector>

namespace support {

/**
 * Intercepts the system calls that write files, for as long as it lives: remembers them by name, and may let
 * one of them go wrong. Only one may exist at a time.
 */
class FileSteps {
  public:
    enum class Then {
        /** The call does nothing and fails. */
        Fail,
        /** The process ends before the call, as if the power failed. */
        EndProcess,
        /** Only the first byte is written, and the call succeeds. */
        WriteOneByte
    };

    /** What goes wrong, and at which of the calls, counted from 0. */
    struct Trouble {
        std::size_t step = 0;
        Then then = Then::Fail;
        int systemError = 0;
    };

    explicit FileSteps(std::optional<Trouble> trouble = {});
    ~FileSteps();
    FileSteps(const FileSteps&) = delete;
    FileSteps& operator=(const FileSteps&) = delete;

    /** The names of the calls so far. */
    const std::vector<std::string>& calls() const { return calls_; }

    /** Remembers the call and returns what goes wrong with it. Does not return when the process is to end. */
    static std::optional<Trouble> next(const char* call);

  private:
    std::optional<Trouble> trouble_;
    std::vector<std::string> calls_;
};

} // namespace support
