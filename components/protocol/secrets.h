#pragma once

#include "components/protocol/command_text.h"

#include <string>
#include <string_view>
#include <vector>

namespace protocol {

/** Texts that nobody may see, and that a server may repeat all the same. */
class Secrets {
  public:
    /** Adds a secret; an empty one hides nothing. */
    void add(std::string_view secret);

    /** Adds the password, as it is and as it looks in the base64 of any text that it is a part of. */
    void addPassword(std::string_view password);

    /** Adds what the command hides when it is shown. */
    void addHiddenIn(const CommandText& command);

    /** The text with "****" in place of each run of bytes that secrets cover. */
    std::string hiddenIn(std::string_view text) const;

  private:
    std::vector<std::string> secrets_;
};

} // namespace protocol
