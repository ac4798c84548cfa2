#pragma once

#include "platform/private_file.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace platform {

/**
 * A private file that is written again and again, each time as a whole and on a thread of its own. Whenever
 * the process ends, even by a loss of power, the file holds what was written last or what was written before,
 * never a mixture. Only one program may work with the file at a time.
 */
class KeptFile {
  public:
    /** Most bytes that a file may have: more than any message that can be opened. */
    static constexpr std::int64_t kMaximumBytes = 512LL << 20U;

    KeptFile() = default;

    /** Waits until what is being written is on the disk. */
    ~KeptFile();

    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    /**
     * Sets the system's own path of the file; empty for none, as at the beginning. Waits until what is being
     * written is on the disk.
     */
    void setPath(const QString& nativePath);

    bool hasPath() const { return !path_.isEmpty(); }

    /**
     * The file's content; nothing when there is no such file, or when it cannot be read or has more than
     * kMaximumBytes.
     */
    std::optional<std::string> read() const;

    bool isWriting() const { return writer_.joinable(); }

    /**
     * Writes the content on a thread of its own, and then calls the function on the calling thread with the
     * number of the error: 0 for none, 75 when the file cannot be written, 61 when the disk is full, 57 when
     * it fails, 7 for more than kMaximumBytes. Call it only while nothing is being written.
     * \throws RuntimeError 7 when there is no memory for a thread.
     */
    void write(std::string content, std::function<void(int error)> whenWritten);

    /**
     * Writes the content after what is being written, and returns when it is on the disk.
     * \throws RuntimeError with the numbers that write() reports.
     */
    void writeNow(const std::string& content);

    /** Removes the file, after what is being written; does nothing when there is none. */
    void remove();

    /** Waits until nothing is being written any more. */
    void waitForWriter();

  private:
    QString path_;
    std::thread writer_;
    /**
     * Receives the event that the writer posts at its end. An event that is still waiting is destroyed with
     * it.
     */
    QObject receiver_;
};

} // namespace platform
