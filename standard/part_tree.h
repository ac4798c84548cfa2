#pragma once

#include "standard/entity.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace standard {

/** How well a part can be read. */
enum class Readable : std::uint8_t { Not, AsText, AsHtml, AsPlainText };

/** A part of a message with the parts in it. */
struct Part {
    Entity entity;
    std::vector<Part> parts;
    /** The best of what it or a part in it has to be read. */
    Readable readable = Readable::Not;
};

/** Parts of one message; what lies behind them belongs to the last one. */
inline constexpr std::size_t kMaximumParts = 10'000;

/** Multiparts inside one another; one that lies deeper is not taken apart. */
inline constexpr int kMaximumDepth = 100;

/** Takes a message apart. Messages in it stay whole. */
Part partTree(Entity message);

} // namespace standard
