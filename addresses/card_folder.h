#pragma once

#include "addresses/vcard.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <stop_token>
#include <vector>

namespace addresses {

/** What a folder of cards has come to. */
struct CardFolder {
    std::vector<Card> cards;
    /** Cards, and files of cards, that cannot be read. */
    std::size_t unreadable = 0;
    /** The folder, or one inside it, cannot be read. */
    bool hasClosedFolder = false;
    /** A limit was reached before all of it was read. */
    bool tooLarge = false;
};

/** How much of a folder of cards is read. */
struct CardFolderLimits {
    std::int64_t fileBytes = std::int64_t{1} << 20U;
    std::int64_t allBytes = std::int64_t{128} << 20U;
    std::size_t files = 10'000;
    /** Files and folders of every kind. */
    std::size_t entries = 100'000;
    /** Folders inside one another; the outermost is 1. */
    int depth = 10;
};

/**
 * Reads the cards of all files below a folder whose names end in ".vcf", in letters of either case. No link
 * is followed, and what is hidden, with a dot before its name, is left alone; the rest is in the order of
 * the names. A folder that is not there has no cards. Ends soon after it is asked to stop.
 * \throws RuntimeError 7 when memory cannot be had.
 */
CardFolder readCardFolder(const QString& nativePath, const std::stop_token& stop,
                          const CardFolderLimits& limits = {});

} // namespace addresses
