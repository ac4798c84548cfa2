#pragma once

#include <string>
#include <utility>

namespace platform {

/** The error number for a system error that came while a file was opened or put in its place. */
int openingErrorNumber(int systemError) noexcept;

/** The error number for a system error that came while a file was written: 61 for a full disk or quota. */
int writingErrorNumber(int systemError) noexcept;

/** An open file, closed when it goes. */
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
 * Waits until the content of the file, or the entries of the folder, are on the disk. A file system that
 * knows no such waiting will do. \throws RuntimeError 61 when the disk turns out to be full, 57 when it
 * fails.
 */
void waitForDisk(const FileDescriptor& file);

/**
 * Waits until the folder of this file has the file's name on the disk. For a folder that may be written but
 * not read this is its whole file system.
 * \throws RuntimeError 61 when the disk turns out to be full, 57 when it fails, 75 or 68 when the folder is
 * gone by now.
 */
void waitForFolderOf(const std::string& path, const FileDescriptor& file);

} // namespace platform
