#pragma once

#include <optional>
#include <string>
#include <vector>

namespace support {

/**
 * Stands between this program and the system for as long as it lives: remembers the calls that write files,
 * by name, and may let one of them go wrong. One stands at a time.
 */
class FileSteps {
  public:
    enum class Then {
        /** The call does nothing and fails. */
        Fail,
        /** The process ends before the call, as when the power goes. */
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

    /** Remembers the call and returns what goes wrong with it; a process that is to end has ended then. */
    static std::optional<Trouble> next(const char* call);

  private:
    std::optional<Trouble> trouble_;
    std::vector<std::string> calls_;
};

} // namespace support
