#pragma once

#include "platform/private_file.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace netcodelib {

/** What the codec is told to do. */
enum class Action : std::uint8_t { None = 0, Decode = 1, Encode = 2 };

/**
 * The transfer codec: turns a file into encoded text, or encoded text back into a file.
 *
 *     codec.setOverwrite(true);
 *     codec.setSourceFile("C:\\DOCS\\REPORT.TXT"); codec.setTargetFile("C:\\REPORT.B64");
 *     codec.setCodingFormat(NetCode::kBase64);
 *     codec.setAction(Action::Encode);
 *     codec.targetFile();
 *
 * Files are named by drive paths. A file of any size is converted in pieces, in constant memory. The file
 * that comes out may be read by the user only and is never executable.
 *
 * An encoded file is written in place, and removed when encoding fails. When the old file is still held (see
 * takeEncodedFile()), it is left alone and a new file takes its place. A decoded file takes the target's
 * place when all of it has been decoded and is on the disk. When decoding fails, the target stays as it was.
 * Either way no partial file is left that could be taken for a whole one.
 */
class NetCode {
  public:
    /** The only coding format: base64 (RFC 2045 section 6.8). */
    static constexpr int kBase64 = 1;

    /**
     * Called now and then while the codec works, and at the end, with numbers of bytes of the source. An
     * error that it raises ends the work like any other error.
     */
    std::function<void(std::int64_t bytesDone, std::int64_t bytesInAll)> Progress;

    /** Whether an existing target may be replaced; if not, setAction() raises error 75. */
    void setOverwrite(bool overwrite) noexcept { overwrite_ = overwrite; }

    void setSourceFile(const QString& drivePath) { sourceFile_ = drivePath; }

    void setTargetFile(const QString& drivePath) { targetFile_ = drivePath; }

    QString targetFile() const { return targetFile_; }

    /** Text that stands behind the encoded text in the target; none when it is empty. */
    void setClosingText(std::string text) { closingText_ = std::move(text); }

    /**
     * The open file that was encoded last, even when the target's name leads to another file by now; nothing
     * when there is none, or when it was taken before. While it is held, no codec writes into it, not even
     * one in another process.
     */
    platform::HeldFile takeEncodedFile() { return std::exchange(encodedFile_, nullptr); }

    /** \throws RuntimeError 5 for any format but kBase64. */
    void setCodingFormat(int format);

    /** The name that the coded file is known by. Base64 text carries no name, so nothing depends on it. */
    void setFileName(const QString& name) { fileName_ = name; }

    QString fileName() const { return fileName_; }

    /**
     * Runs the action, and returns when it is done; None does nothing.
     * \throws RuntimeError 53 when there is no source file, 75 when a file is no plain file, may not be read
     * or written, or is source and target at once, 68 when a drive is not ready, 57 when the source changes
     * while it is read or a disk fails, 61 when the disk is full, 20502 when the source is not base64 text,
     * or not all of it.
     */
    void setAction(Action action);

  private:
    template <class Coder>
    void convert(Coder coder);

    QString sourceFile_;
    QString targetFile_;
    QString fileName_;
    std::string closingText_;
    platform::HeldFile encodedFile_;
    bool overwrite_ = false;
};

} // namespace netcodelib

/** The component under its full name. */
namespace NetCodeLib {
using netcodelib::NetCode;
} // namespace NetCodeLib
