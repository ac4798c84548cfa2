#pragma once

#include <QString>

#include <functional>

namespace MCI {

/**
 * Plays a wave file at the commands "Open", "play" and "close". The sound system is loaded at the first
 * "play", so that it does not delay start-up. Without a sound device, or without the file, "play" does
 * nothing.
 */
class MMControl {
  public:
    void setNotify(bool on) { notify_ = on; }

    void setWait(bool on) { wait_ = on; }

    void setShareable(bool on) { shareable_ = on; }

    void setAutoEnable(bool on) { autoEnable_ = on; }

    /** The only device type is "WaveAudio". */
    void setDeviceType(const QString& type) { deviceType_ = type; }

    void setFileName(const QString& fileName) { fileName_ = fileName; }

    void setCommand(const QString& command);

  private:
    bool notify_ = false;
    bool wait_ = false;
    bool shareable_ = false;
    bool autoEnable_ = false;
    bool open_ = false;
    QString deviceType_ = QStringLiteral("WaveAudio");
    QString fileName_;
};

/** Replaces the sound system by a function, for tests. It takes the file to play. */
void replaceWavePlayer(std::function<void(const QString& fileName)> standIn);

} // namespace MCI
