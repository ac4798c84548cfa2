#pragma once

#include <utility>

namespace platform {

/** Sets a variable for as long as this object lives, and then puts back the value that it had before. */
template <class Value>
class WhileSet {
  public:
    WhileSet(Value& variable, Value value)
        : variable_(variable), before_(std::exchange(variable, std::move(value))) {}

    ~WhileSet() { variable_ = std::move(before_); }

    WhileSet(const WhileSet&) = delete;
    WhileSet& operator=(const WhileSet&) = delete;

  private:
    Value& variable_;
    Value before_;
};

} // namespace platform
