#include "platform/sequential_file.h"

#include "platform/runtime_error.h"

#include <QFileInfo>
#include <QSaveFile>

namespace platform {

namespace {
constexpr std::size_t kReadBytes = 64U << 10U;
}

SequentialInput::SequentialInput(const QString& path) : file_(path) {
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        throw RuntimeError(errors::FileNotFound);
    }
    // A folder has no lines, and opening a pipe would wait for ever.
    if (!info.isFile() || !file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw RuntimeError(errors::PathFileAccess);
    }
}

bool SequentialInput::fill() {
    buffer_.resize(kReadBytes);
    const qint64 bytes = file_.read(buffer_.data(), static_cast<qint64>(buffer_.size()));
    if (bytes < 0) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    buffer_.resize(static_cast<std::size_t>(bytes));
    used_ = 0;
    return bytes > 0;
}

std::string SequentialInput::nextLine() {
    if (used_ == buffer_.size() && !fill()) {
        throw RuntimeError(errors::InputPastEndOfFile);
    }
    std::string line;
    for (;;) {
        const std::size_t end = buffer_.find_first_of("\r\n", used_);
        line.append(buffer_, used_, end == std::string::npos ? end : end - used_);
        if (line.size() > kMaximumLineBytes) {
            throw RuntimeError(errors::OutOfMemory);
        }
        if (end != std::string::npos) {
            const bool carriageReturn = buffer_[end] == '\r';
            used_ = end + 1;
            const bool more = used_ < buffer_.size() || fill();
            if (carriageReturn && more && buffer_[used_] == '\n') {
                ++used_;
            }
            return line;
        }
        if (!fill()) {
            return line;
        }
    }
}

void writeWholeFile(const QString& path, const std::string& content) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        throw RuntimeError(errors::PathFileAccess);
    }
    const auto size = static_cast<qint64>(content.size());
    // Flushed by itself, because committing does not tell of a disk that was too full for the last bytes.
    if (file.write(content.data(), size) != size || !file.flush() || !file.commit()) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
}

} // namespace platform
