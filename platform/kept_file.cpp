#include "platform/kept_file.h"

#include "platform/replacement.h"
#include "platform/runtime_error.h"

#include <QFile>
#include <QMetaObject>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {
/**
 * The ending of the name of the file that is being written. It is always the same, so that a file left by a
 * process that ended is used again.
 */
constexpr const char* kUnfinished = ".new";

void waitForFolderOf(const QString& path) {
    const QByteArray folder = QFile::encodeName(path.left(path.lastIndexOf(u'/') + 1));
    waitForDisk(FileDescriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
}

void writeWhole(const QString& path, const std::string& content) {
    if (content.size() > static_cast<std::size_t>(KeptFile::kMaximumBytes)) {
        throw RuntimeError(errors::OutOfMemory);
    }
    const QString unfinished = path + QLatin1String(kUnfinished);
    PrivateOutput output(unfinished, Writing::InPlace);
    output.write(content);
    output.finish();
    putInPlace(*output.takeFile(), QFile::encodeName(unfinished).toStdString(),
               QFile::encodeName(path).toStdString());
}
} // namespace

KeptFile::~KeptFile() {
    waitForWriter();
}

void KeptFile::setPath(const QString& nativePath) {
    waitForWriter();
    path_ = nativePath;
}

std::optional<std::string> KeptFile::read() const {
    std::string content;
    const int error = errorNumberOf([&] {
        RegularInput input(path_);
        if (input.size() > kMaximumBytes) {
            throw RuntimeError(errors::OutOfMemory);
        }
        content.resize(static_cast<std::size_t>(input.size()));
        for (std::size_t used = 0; used < content.size();) {
            used += input.read(std::span(content).subspan(used)).size();
        }
    });
    return error == errors::None ? std::optional(std::move(content)) : std::nullopt;
}

void KeptFile::write(std::string content, std::function<void(int error)> whenWritten) {
    waitForWriter();
    const auto work = [this, path = path_, content = std::move(content),
                       whenWritten = std::move(whenWritten)] {
        const int error = errorNumberOf([&] { writeWhole(path, content); });
        QMetaObject::invokeMethod(
            &receiver_,
            [this, error, whenWritten] {
                waitForWriter();
                whenWritten(error);
            },
            Qt::QueuedConnection);
    };
    try {
        writer_ = std::thread(work);
    } catch (const std::system_error&) {
        throw RuntimeError(errors::OutOfMemory);
    }
}

void KeptFile::writeNow(const std::string& content) {
    waitForWriter();
    writeWhole(path_, content);
}

void KeptFile::remove() {
    waitForWriter();
    const int unfinished = ::unlink(QFile::encodeName(path_ + QLatin1String(kUnfinished)).constData());
    const int whole = ::unlink(QFile::encodeName(path_).constData());
    if (unfinished == 0 || whole == 0) {
        // The file is gone even when this wait fails, unless the power is lost at this moment.
        static_cast<void>(errorNumberOf([this] { waitForFolderOf(path_); }));
    }
}

void KeptFile::waitForWriter() {
    if (writer_.joinable()) {
        writer_.join();
    }
}

} // namespace platform
