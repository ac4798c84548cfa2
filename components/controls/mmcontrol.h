#pragma once

#include <QString>

#include <functional>

namespace MCI {

/**
 * Plays a wave file at the commands "Open", "play" and "close". Nothing is opened before the first "play":
 * the sound system is loaded then, so that start-up does not pay for it. Without a sound device, or without
 * the file, "play" does nothing.
 */
class MMControl {
  public:
    void setNotify(bool on) { notify_ = on; }

    void setWait(bool on) { wait_ = on; }

    void setShareable(bool on) { shareable_ = on; }

    void setAutoEnable(bool on) { autoEnable_ = on; }

    /** The one device type that there is is "WaveAudio". */
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

/** Puts a function in the place of the sound system, for tests; it is given the file to be played. */
void replaceWavePlayer(std::function<void(const QString& fileName)> standIn);

} // namespace MCI
