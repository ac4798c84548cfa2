#pragma once

#include <functional>

namespace platform {

/**
 * Runs work that touches neither windows nor shared state, such as encoding a file, while the windows stay
 * alive; returns when it is done. What the work throws is thrown again here.
 */
void runInBackground(const std::function<void()>& work);

} // namespace platform
