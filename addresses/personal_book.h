#pragma once

#include "addresses/address_source.h"

#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace addresses {

/** What the member's own address book is made of. */
struct PersonalSources {
    /** The From lines of the listed messages, the newest first; as the list of messages shows them. */
    std::vector<std::string> senders;
    /** A native path; empty for none. */
    QString cardFolder;
};

/**
 * The people who have written to the mailbox, the newest message first, and behind them those of the member's
 * own cards, by their names. Each address counts once, with its newest name; letters of either case are the
 * same. Found are those whose name or address has every word of what was typed; with nothing typed, all.
 *
 * The cards are read once, beside the windows; a search waits for them.
 */
std::unique_ptr<AddressSource> makePersonalBook(PersonalSources sources);

} // namespace addresses
