#pragma once

#include "addresses/address_source.h"

#include <chrono>
#include <memory>
#include <string>

namespace addresses {

/** Where and how to look addresses up in a directory; everything is UTF-8. */
struct DirectorySettings {
    /** As it stands in the settings, in the spellings of mail servers. */
    std::string server;
    /** Where the search begins. */
    std::string base;
    /**
     * The name and the password of the log-in. They are shown only to a server that has proven its name
     * (`tls://`, `starttls://`) and demands a log-on. Empty for nobody.
     */
    std::string user;
    std::string password;
    /** How long one search may last, from the name service to the last answer. */
    std::chrono::milliseconds patience{10'000};
};

/**
 * A directory as a place to look addresses up. After a refused log-on it tells of that and tries none again.
 */
std::unique_ptr<AddressSource> makeDirectorySource(DirectorySettings settings);

} // namespace addresses
