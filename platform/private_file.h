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

/** An open file that several hold; closed when the last one lets it go. */
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

    /** Reads a file that is open already, whatever stands under its name by now. */
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
     * The file itself is written anew, which saves giving its space away and asking for it again; a failure
     * removes it. A file that another output holds is left alone: a new one takes its place, as BesideTarget.
     */
    InPlace,
    /**
     * A new file next to it is written and takes its place at the end, when it is on the disk; a failure
     * leaves the old one.
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
 * Whatever stands in the file's place must be the user's own plain file, under no second name. Somebody may
 * have put a link there, for the program to overwrite the file at its other end; or a pipe, to make it wait.
 * The folders on the way are trusted.
 *
 * Without a finish() that succeeds the file was never written: see Writing for what is left then.
 */
class PrivateOutput {
  public:
    /**
     * Opens the file, or makes it. Never waits.
     * \throws RuntimeError 75 when what is there is a link, a folder, a pipe, a device, somebody else's, of
     * several names, not to be replaced, or when the folder is missing or closed to the user; 61 when the
     * disk is full.
     */
    PrivateOutput(const QString& nativePath, Writing writing, Existing existing = Existing::Replace);

    ~PrivateOutput();

    PrivateOutput(const PrivateOutput&) = delete;
    PrivateOutput& operator=(const PrivateOutput&) = delete;

    /** \throws RuntimeError 61 when the disk is full, 57 when it fails otherwise. */
    void write(std::string_view bytes);

    /**
     * Makes the file count. Call it once, last. A file that was written beside its target is on the disk by
     * then, under its name, as slow as the disk may be; the others may still be on their way there.
     * \throws RuntimeError 61 when the disk turns out to be full, 57 when it fails, or when somebody else
     * has written into the file, 75 when the file cannot be put in its place. When only the last step fails,
     * waiting for the folder to reach the disk, the new file is in its place all the same.
     */
    void finish();

    /**
     * The finished file itself, for reading it again whatever stands under its name by then; only after
     * InPlace. For as long as it is held, no other output writes into it.
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
