#pragma once

#include <QString>

namespace controls {

/**
 * Starts to play a wave file and returns at once. Plays nothing when the file or the sound library is
 * missing, or the computer has no sound device.
 */
void playWave(const QString& fileName);

/**
 * Plays a wave file as playWave() does, and waits until the sound system has taken it. Returns why nothing is
 * to be heard; empty when something is.
 */
QString playWaveAndTell(const QString& fileName);

/** True when the system has the library that plays sounds. Loads it, but makes no use of it. */
bool hasSoundLibrary();

} // namespace controls
