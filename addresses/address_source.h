#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace addresses {

/** One address that was found. Everything is UTF-8 without control characters. */
struct FoundAddress {
    /** At most 64 letters; empty where nobody told a name. */
    std::string name;
    /** At most 254 bytes, and one that the program itself can send to. */
    std::string address;
    /** Where it comes from, in words for the window. */
    std::string source;

    bool operator==(const FoundAddress&) const = default;
};

/** What a search has come to. */
struct FoundAddresses {
    /** At most `mostFound`, in the order in which they are shown. */
    std::vector<FoundAddress> found;
    /** There are more, which only a longer text would show. */
    bool more = false;
    /** What went wrong or was passed over, in words for the window's own line; empty for nothing. */
    std::string trouble;
};

/** How many addresses one search shows at most. */
inline constexpr std::size_t mostFound = 50;

/** A place where addresses are looked up, for as long as one window is open. */
class AddressSource {
  public:
    AddressSource() = default;
    virtual ~AddressSource() = default;
    AddressSource(const AddressSource&) = delete;
    AddressSource& operator=(const AddressSource&) = delete;

    /**
     * Begins to look for what was typed, as UTF-8, and gives up the search before. `found` is called once,
     * from the event loop of the thread that asked and never from within this call; not at all when the
     * search was given up.
     */
    virtual void search(std::string typed, std::function<void(FoundAddresses)> found) = 0;

    /** Gives up the search that runs, if there is one. Returns at once. */
    virtual void giveUp() = 0;
};

} // namespace addresses
