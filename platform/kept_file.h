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
 * A private file that is written again and again, each time as a whole and beside the windows. Whenever the
 * process ends, be it by a loss of power, the file holds what was written last or what was written before,
 * never a mixture. One program works with the file at a time.
 */
class KeptFile {
  public:
    /** Bytes that a file may have: more than any message that can be opened. */
    static constexpr std::int64_t kMaximumBytes = 512LL << 20U;

    KeptFile() = default;

    /** Waits until what is being written is on the disk. */
    ~KeptFile();

    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    /** The system's own path of the file; empty for none, which is how it begins. */
    void setPath(const QString& nativePath);

    bool hasPath() const { return !path_.isEmpty(); }

    /** The file's content; nothing when there is no such file, or when it cannot be read. */
    std::optional<std::string> read() const;

    bool isWriting() const { return writer_.joinable(); }

    /**
     * Writes the content beside the windows, and calls the function, on this thread, with the number of the
     * error: 0 for none, 75 when the file cannot be written, 61 when the disk is full, 57 when it fails, 7
     * for more than kMaximumBytes. Only while nothing is being written.
     * \throws RuntimeError 7 when there is no memory for a thread.
     */
    void write(std::string content, std::function<void(int error)> whenWritten);

    /** Writes the content at once, after what is being written. \throws RuntimeError as told above. */
    void writeNow(const std::string& content);

    /** Removes the file, after what is being written; one that is not there will do. */
    void remove();

    /** Returns when nothing is being written any more. */
    void waitForWriter();

  private:
    QString path_;
    std::thread writer_;
    /** The events of the writer's end come here, and go with it. */
    QObject receiver_;
};

} // namespace platform
