#include "components/controls/wave_player.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

#include <QLibrary>
#include <QThreadPool>
#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace {

/** Redirects the standard error into the folder's file "errors" for as long as this lives. */
class StandardErrorInto {
  public:
    explicit StandardErrorInto(const support::TemporaryFolder& folder)
        : file_(::fopen(folder.path("errors").c_str(), "w")), before_(::dup(STDERR_FILENO)) {
        ::dup2(::fileno(file_), STDERR_FILENO);
    }

    ~StandardErrorInto() {
        ::dup2(before_, STDERR_FILENO);
        ::close(before_);
        ::fclose(file_);
    }

    StandardErrorInto(const StandardErrorInto&) = delete;
    StandardErrorInto& operator=(const StandardErrorInto&) = delete;

  private:
    std::FILE* file_;
    int before_;
};

/** Two samples of silence: 16 bits, one channel, 22050 in a second. */
std::string waveFile() {
    using namespace std::string_literals;
    return "RIFF\x28\0\0\0WAVE"
           "fmt \x10\0\0\0\x01\0\x01\0\x22\x56\0\0\x44\xAC\0\0\x02\0\x10\0"
           "data\x04\0\0\0\0\0\0\0"s;
}

TEST(WavePlayer, WithoutASoundDeviceItIsSilentOnTheStandardErrorToo) {
    if (!QLibrary(QStringLiteral("canberra"), 0).load()) {
        GTEST_SKIP() << "no sound library";
    }
    const support::TemporaryFolder folder;
    folder.write("chime.wav", waveFile());
    // An empty ALSA configuration hides the devices of a computer that has some.
    const support::EnvironmentVariable alsa("ALSA_CONFIG_PATH", folder.write("asound.conf", ""));
    {
        const StandardErrorInto file(folder);
        controls::playWave(folder.qtPath("chime.wav"));
        QThreadPool::globalInstance()->waitForDone();
    }
    EXPECT_EQ(folder.read("errors"), "");
}

TEST(WavePlayer, TellsWhyNothingIsToBeHeard) {
    const support::TemporaryFolder folder;
    EXPECT_EQ(controls::playWaveAndTell(folder.qtPath("none.wav")), QStringLiteral("there is no such file"));
    // The sound system reads the file before it looks for a device.
    folder.write("broken.wav", "no sound");
    EXPECT_FALSE(controls::playWaveAndTell(folder.qtPath("broken.wav")).isEmpty());
}

} // namespace
