#pragma once

#include "components/controls/mmcontrol.h"

/** Makes the wave player ready: its four switches, then the command "Open". */
inline void openWavePlayer(MCI::MMControl& player) {
    player.setNotify(false);
    player.setWait(true);
    player.setShareable(false);
    player.setAutoEnable(true);
    player.setCommand(QStringLiteral("Open"));
}
