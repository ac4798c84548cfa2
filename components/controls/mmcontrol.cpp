#include "components/controls/mmcontrol.h"

#include "components/controls/wave_player.h"

#include <utility>

namespace MCI {

namespace {
std::function<void(const QString&)>& wavePlayer() {
    static std::function<void(const QString&)> player = controls::playWave;
    return player;
}
} // namespace

void MMControl::setCommand(const QString& command) {
    if (command.compare(QLatin1String("open"), Qt::CaseInsensitive) == 0) {
        open_ = true;
    } else if (command.compare(QLatin1String("close"), Qt::CaseInsensitive) == 0) {
        open_ = false;
    } else if (command.compare(QLatin1String("play"), Qt::CaseInsensitive) == 0 && open_ &&
               deviceType_ == QLatin1String("WaveAudio")) {
        wavePlayer()(fileName_);
    }
}

void replaceWavePlayer(std::function<void(const QString& fileName)> standIn) {
    wavePlayer() = standIn ? std::move(standIn) : controls::playWave;
}

} // namespace MCI
