#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace directory {

/**
 * Looks at how each message begins before the library has it. The library takes any byte for a tag and what
 * follows for a length, and never frees some of what it does not expect.
 */
class LdapGate {
  public:
    /** What the library may read of the bytes and of those before; nothing behind the end. */
    std::string pass(std::string_view bytes);

    /** Something has come that is no LDAP, or too long, or the server's notice that it ends the session. */
    bool hasEnded() const noexcept { return hasEnded_; }

    /** The beginning of a message is held back until there is enough of it. */
    bool holdsBack() const noexcept { return !head_.empty(); }

  private:
    bool isComplete();

    std::string head_;
    /** Bytes of the message that are still to come behind its head. */
    std::size_t rest_ = 0;
    bool hasEnded_ = false;
};

} // namespace directory
