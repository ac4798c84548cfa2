#pragma once

#include "platform/file_descriptor.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {

/** What becomes of a file that is there already. */
enum class Existing { Replace, Refuse };

/** Writes all of the bytes. \throws RuntimeError 61 when the disk is full, 57 when it fails otherwise. */
void writeAll(const FileDescriptor& file, std::string_view bytes);

/**
 * Gives the file another name in its folder, once its content is on the disk, and returns when the new name
 * is there too: a loss of power leaves the old file under that name, or the new one, whole. \throws
 * RuntimeError 61 when the disk turns out to be full, 57 when it fails, 75 when the name cannot be given, as
 * when a file that is not to be replaced has it. When only the last wait fails, the file has its name.
 */
void putInPlace(const FileDescriptor& file, const std::string& path, const std::string& target,
                Existing existing = Existing::Replace);

/** A new file beside another one, whose place it takes when it is complete; otherwise it is removed again. */
class Replacement {
  public:
    /**
     * Makes the file, with these rights less those that the user's new files do not have.
     * \throws RuntimeError 75 when the folder is missing or closed to the user, 61 when the disk is full.
     */
    Replacement(std::string target, mode_t rights);

    ~Replacement();

    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    const FileDescriptor& file() const noexcept { return file_; }

    /** Takes the target's place; see putInPlace(). */
    void takePlace(Existing existing = Existing::Replace);

    /** The file itself, for reading it again; only after takePlace(). */
    FileDescriptor takeFile() noexcept { return std::move(file_); }

  private:
    std::string target_;
    std::string path_;
    FileDescriptor file_;
    bool placed_ = false;
};

/** Removes the file, unless another one stands under its name by now. */
void removeIfStillNamed(const FileDescriptor& file, const std::string& path) noexcept;

} // namespace platform
