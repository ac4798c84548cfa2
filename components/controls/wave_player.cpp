#include "components/controls/wave_player.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QThreadPool>

#include <cstdint>

namespace controls {

namespace {
constexpr QLatin1String kSoundLibrary("canberra");

struct ca_context;

using AlsaErrorHandler = void (*)(const char* file, int line, const char* function, int error,
                                  const char* format, ...);

// ALSA calls it with a format and its arguments, as printf() is called.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void sayNothing(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                const char* /*format*/, ...) {}

/** The sound library, loaded at the first sound. It chooses the sound system of the computer. */
class SoundLibrary {
  public:
    SoundLibrary() : library_(QString(kSoundLibrary), 0) {
        const auto create = reinterpret_cast<int (*)(ca_context**)>(library_.resolve("ca_context_create"));
        play_ = reinterpret_cast<Play>(library_.resolve("ca_context_play"));
        text_ = reinterpret_cast<const char* (*)(int)>(library_.resolve("ca_strerror"));
        silenceAlsa();
        if (create == nullptr || play_ == nullptr || create(&context_) != 0) {
            context_ = nullptr;
        }
    }

    /** Returns why nothing is to be heard; empty when something is. */
    QString play(const QByteArray& path) const {
        if (context_ == nullptr) {
            return QStringLiteral("there is no library for sounds, libcanberra");
        }
        const int fault =
            play_(context_, 0, "media.filename", path.constData(), static_cast<const char*>(nullptr));
        return fault == 0 ? QString() : textOf(fault);
    }

  private:
    using Play = int (*)(ca_context*, std::uint32_t, ...);

    QString textOf(int fault) const {
        return QStringLiteral("the sound system says: ") +
               (text_ != nullptr ? QString::fromUtf8(text_(fault)) : QString::number(fault));
    }

    /** Keeps ALSA, which the sound library uses, from reporting a missing device on the standard error. */
    void silenceAlsa() {
        const auto setErrorHandler =
            reinterpret_cast<int (*)(AlsaErrorHandler)>(alsa_.resolve("snd_lib_error_set_handler"));
        if (setErrorHandler != nullptr) {
            setErrorHandler(sayNothing);
        }
    }

    QLibrary library_;
    QLibrary alsa_{QStringLiteral("asound"), 2};
    Play play_ = nullptr;
    const char* (*text_)(int) = nullptr;
    ca_context* context_ = nullptr;
};

const SoundLibrary& soundLibrary() {
    static const SoundLibrary library;
    return library;
}
} // namespace

bool hasSoundLibrary() {
    return QLibrary(QString(kSoundLibrary), 0).resolve("ca_context_play") != nullptr;
}

void playWave(const QString& fileName) {
    const QFileInfo file(fileName);
    if (!file.isFile()) {
        return;
    }
    // Another thread, since the sound system may take a while to answer and would block the windows.
    QThreadPool::globalInstance()->start([path = QFile::encodeName(file.absoluteFilePath())] {
        // The new mail is in the list, whether or not it can be heard.
        static_cast<void>(soundLibrary().play(path));
    });
}

QString playWaveAndTell(const QString& fileName) {
    const QFileInfo file(fileName);
    return file.isFile() ? soundLibrary().play(QFile::encodeName(file.absoluteFilePath()))
                         : QStringLiteral("there is no such file");
}

} // namespace controls
