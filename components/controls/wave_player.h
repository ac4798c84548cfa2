#pragma once

#include <QString>

namespace controls {

/**
 * Starts to play a wave file and returns at once. A missing file, a missing sound library and a machine
 * without a sound device all mean silence.
 */
void playWave(const QString& fileName);

} // namespace controls
