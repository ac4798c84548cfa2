#pragma once

#include <functional>

namespace platform {

/**
 * Runs the work on another thread while the windows stay alive, and returns when it is done. The work, such
 * as encoding a file, must touch neither windows nor shared state. What it throws is thrown again here.
 */
void runInBackground(const std::function<void()>& work);

} // namespace platform
