#pragma once

#include <string>
#include <utility>

namespace platform {

/** The error number for an errno that opening or renaming a file has set. */
int openingErrorNumber(int systemError) noexcept;

/** The error number for an errno that writing a file has set: 61 for a full disk or quota. */
int writingErrorNumber(int systemError) noexcept;

/** Owns the descriptor of an open file, and closes it when destroyed. */
class FileDescriptor {
  public:
    FileDescriptor() = default;

    explicit FileDescriptor(int number) noexcept : number_(number) {}

    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    ~FileDescriptor();

    bool isOpen() const noexcept { return number_ >= 0; }

    int number() const noexcept { return number_; }

  private:
    int number_ = -1;
};

/**
 * Waits until the content of the file, or the entries of the folder, are on the disk. On a file system that
 * does not support this it does nothing.
 * \throws RuntimeError 61 when the disk turns out to be full, 57 when it fails.
 */
void waitForDisk(const FileDescriptor& file);

/**
 * Waits until the folder of this file has the file's name on the disk. For a folder that the user may write
 * but not read it waits for the whole file system.
 * \throws RuntimeError 61 when the disk turns out to be full, 57 when it fails, 75 or 68 when the folder is
 * gone by now.
 */
void waitForFolderOf(const std::string& path, const FileDescriptor& file);

} // namespace platform
