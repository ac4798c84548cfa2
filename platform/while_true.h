#pragma once

#include "platform/while_set.h"

namespace platform {

/**
 * Keeps a flag true for as long as this object lives, to mark work that must not begin again while it runs.
 */
class WhileTrue : public WhileSet<bool> {
  public:
    explicit WhileTrue(bool& flag) : WhileSet(flag, true) {}
};

} // namespace platform
