#pragma once

namespace platform {

/** Keeps a flag true for as long as it lives: for what must not begin again while it runs. */
class WhileTrue {
  public:
    explicit WhileTrue(bool& flag) noexcept : flag_(flag) { flag_ = true; }

    ~WhileTrue() { flag_ = false; }

    WhileTrue(const WhileTrue&) = delete;
    WhileTrue& operator=(const WhileTrue&) = delete;

  private:
    bool& flag_;
};

} // namespace platform
