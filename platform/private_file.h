#pragma once

#include "platform/file_descriptor.h"
#include "platform/replacement.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/** An open file with several owners; closed when the last one lets it go. */
using HeldFile = std::shared_ptr<const FileDescriptor>;

/** A plain file that is read in pieces, from its start to the end that it had when it was opened. */
class RegularInput {
  public:
    /**
     * Opens the file; a link to a plain file is followed. Never waits.
     * \throws RuntimeError 53 when there is none, 75 when it may not be read or is a folder, a pipe or a
     * device.
     */
    explicit RegularInput(const QString& nativePath);

    /** Reads a file that is open already, even when its name leads to another file by now. */
    explicit RegularInput(HeldFile file);

    /** Bytes of the whole file. */
    std::int64_t size() const noexcept { return size_; }

    std::int64_t bytesRead() const noexcept { return bytesRead_; }

    /**
     * Reads on into the buffer, which must not be empty, and returns what came; nothing at the end.
     * \throws RuntimeError 57 when the file has shrunk or grown since it was opened, or the disk fails.
     */
    std::string_view read(std::span<char> buffer);

    /**
     * Begins again at the start.
     * \throws RuntimeError 57 when the file has shrunk or grown since it was opened.
     */
    void rewind();

    /** Whether the path leads to the very file that is being read. */
    bool isFileOf(const QString& nativePath) const;

  private:
    HeldFile file_;
    std::int64_t size_ = 0;
    std::int64_t bytesRead_ = 0;
};

enum class Writing {
    /**
     * The file itself is overwritten, which saves freeing its space and asking for it again. A failure
     * removes it. A file that another output holds is left alone: a new one takes its place, as with
     * BesideTarget.
     */
    InPlace,
    /**
     * A new file is written next to the target and takes its place at the end, when it is on the disk. A
     * failure leaves the old file.
     */
    BesideTarget
};

/**
 * A file that only the user may read, mode 0600, written in pieces.
 *
 *     PrivateOutput output(path, Writing::InPlace);
 *     output.write(bytes); ...
 *     output.finish();
 *
 * An existing file must be the user's own plain file, with no second name. Another user may have put a link
 * there, so that the program overwrites the file at its other end; or a pipe, to make it wait. The folders on
 * the way are trusted.
 *
 * Unless finish() succeeds, the file counts as not written; Writing says what is left then.
 */
class PrivateOutput {
  public:
    /**
     * Opens the file, or makes it. Never waits.
     * \throws RuntimeError 75 when the existing file is a link, a folder, a pipe, a device, another user's,
     * has several names, or must not be replaced; also 75 when the folder is missing or closed to the user;
     * 61 when the disk is full.
     */
    PrivateOutput(const QString& nativePath, Writing writing, Existing existing = Existing::Replace);

    ~PrivateOutput();

    PrivateOutput(const PrivateOutput&) = delete;
    PrivateOutput& operator=(const PrivateOutput&) = delete;

    /** \throws RuntimeError 61 when the disk is full, 57 when it fails otherwise. */
    void write(std::string_view bytes);

    /**
     * Completes the file. Call it once, last. A file that was written BesideTarget is on the disk under its
     * name when this returns, however slow the disk is. Others may reach the disk later.
     * \throws RuntimeError 61 when the disk turns out to be full, 57 when it fails, or when another program
     * has written into the file, 75 when the file cannot be put in its place. When only the last step fails,
     * waiting for the folder to reach the disk, the new file is in its place all the same.
     */
    void finish();

    /**
     * Returns the finished file itself, still open, for reading it again even when its name leads to another
     * file by then. Only for InPlace. While it is held, no other output writes into it.
     */
    HeldFile takeFile() {
        return std::make_shared<const FileDescriptor>(replacement_ ? replacement_->takeFile()
                                                                   : std::move(file_));
    }

  private:
    void openInPlace();
    bool openForItself();
    void openBeside();

    /** What is being written. */
    const FileDescriptor& file() const noexcept { return replacement_ ? replacement_->file() : file_; }

    std::string path_;
    Existing existing_;
    /** The file that is written in place; closed when one beside it is. */
    FileDescriptor file_;
    std::optional<Replacement> replacement_;
    bool finished_ = false;
    std::int64_t bytesBefore_ = 0;
    std::int64_t bytesWritten_ = 0;
};

} // namespace platform
