#pragma once

namespace bench {

/** The most memory that this process has had so far, in KiB. \throws std::runtime_error when none is told. */
long peakMemory();

} // namespace bench
