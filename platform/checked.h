#pragma once

#include "platform/runtime_error.h"

#include <concepts>
#include <utility>

namespace platform {

/** Returns the value as the narrower integer type. \throws RuntimeError 6 when it does not fit. */
template <std::integral To, std::integral From>
constexpr To checkedTo(From value) {
    if (!std::in_range<To>(value)) {
        throw RuntimeError(errors::Overflow);
    }
    return static_cast<To>(value);
}

/** Returns the product. \throws RuntimeError 6 when it does not fit the type. */
template <std::integral Number>
constexpr Number checkedMultiply(Number left, Number right) {
    Number product = 0;
    if (__builtin_mul_overflow(left, right, &product)) {
        throw RuntimeError(errors::Overflow);
    }
    return product;
}

/** Returns the difference. \throws RuntimeError 6 when it does not fit the type. */
template <std::integral Number>
constexpr Number checkedSubtract(Number left, Number right) {
    Number difference = 0;
    if (__builtin_sub_overflow(left, right, &difference)) {
        throw RuntimeError(errors::Overflow);
    }
    return difference;
}

} // namespace platform
