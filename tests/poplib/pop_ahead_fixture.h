#pragma once

#include "tests/poplib/pop_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace support {

// Replies to CAPA.
inline constexpr const char* kAnnouncesNothing = "+OK\r\nUSER\r\n.\r\n";
inline constexpr const char* kAnnouncesNoTop = "+OK\r\nUSER\r\nPIPELINING\r\n.\r\n";

/** A listing as the windows make it, from a server that answers commands ahead. */
class PopAhead : public PopTest {
  protected:
    PopAhead() { pop.setListing(true); }

    /** Logs on, lists all messages as the windows do, and logs off; returns the first error, or 0. */
    int listing() {
        content.clear();
        if (const int error = logOn(); error != 0) {
            return error;
        }
        if (const int error = platform::errorNumberOf([&] { pop.listAhead(1, pop.messageCount(), 25); });
            error != 0) {
            return error;
        }
        for (std::int16_t number = 1; number <= pop.messageCount(); ++number) {
            if (const int error = listOne(number); error != 0) {
                return error;
            }
        }
        std::vector<std::int16_t> later;
        if (const int error = platform::errorNumberOf([&] { later = pop.messagesToFetchLater(); });
            error != 0) {
            return error;
        }
        for (const std::int16_t number : later) {
            content.push_back("later " + std::to_string(number));
            if (const int error = listOne(number); error != 0) {
                return error;
            }
        }
        return logOff();
    }

    int listing(const ScriptedServer& server) {
        pop.setMailServer(server.address());
        return listing();
    }

    int listOne(std::int16_t number) {
        const std::int32_t size = sizeOf(number);
        sizes.push_back(size);
        return size < 0 ? -size : retrieve(number);
    }

    /** The subjects in the order in which they came; "later" is followed by the number of a message. */
    std::vector<std::string> subjects() const {
        std::vector<std::string> found;
        for (const std::string& line : content) {
            if (line.starts_with("header [Subject]") || line.starts_with("later")) {
                found.push_back(line.substr(line.find_last_of("[ ") + 1));
            }
        }
        return found;
    }

    std::vector<std::int32_t> sizes;
    Pop3Mailbox mailbox{{message("one"), message("two"), message("three")}};
};

} // namespace support
