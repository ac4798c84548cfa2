#pragma once

#include "platform/private_file.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <string>

namespace platform {

/** A text file read line by line, as the settings file is. */
class SequentialInput {
  public:
    /** Longest line that is read, in bytes: far longer than any setting, far shorter than memory. */
    static constexpr std::size_t kMaximumLineBytes = 1U << 20U;

    /**
     * Opens the file; see openTrusted() for which files it refuses.
     * \throws RuntimeError 53 when there is none, 75 when it cannot be read, is not a plain file, or may have
     * been put there by another user.
     */
    explicit SequentialInput(const QString& path);

    /**
     * Returns the next line without its line end, which is CR LF, LF or CR alone. A last line may lack one.
     * \throws RuntimeError 62 when no line is left, 7 when a line is longer than kMaximumLineBytes, 57 when
     * the disk fails.
     */
    std::string nextLine();

  private:
    /** Reads on when all bytes are used up; false at the end of the file. */
    bool fill();

    FileDescriptor file_;
    std::string buffer_;
    std::size_t used_ = 0;
};

/**
 * Replaces the file's content as a whole: whatever goes wrong, even a loss of power, the file holds the old
 * content or the new one, never a mixture. When it returns, the new one is on the disk. A new file has the
 * usual rights of new files, since several users may read it. An existing one keeps its rights and, where
 * possible, its owner and group. A link to a file stays, and the file at its end is replaced.
 * \throws RuntimeError 75 when the file cannot be written or put in its place, 61 when the disk is full, 57
 * when writing fails otherwise. After a failure the old content is still there, unless only the last step,
 * waiting for the folder to reach the disk, failed.
 */
void writeWholeFile(const QString& path, const std::string& content);

} // namespace platform
