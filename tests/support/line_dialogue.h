#pragma once

// Dialogues that a test writes down as lines.

#include "tests/support/application.h"
#include "tests/support/recorded_exchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace support {

/**
 * A dialogue of lines that start with "S " for the server and "C " for the client; where "C " is followed by
 * RecordedExchange::kEncryption, encryption begins.
 */
template <class Session>
class LineDialogue : public RecordedExchange<Session> {
  public:
    /** Checks that the client has sent its lines of the dialogue, all of them and no other. */
    void expectToBeSaid() {
        this->collectOutput();
        EXPECT_THAT(this->sent(), testing::ElementsAreArray(clientLines_));
    }

  protected:
    using Base = RecordedExchange<Session>;

    LineDialogue(const std::vector<std::string_view>& lines, typename Base::Describe describe,
                 typename Base::NumberOf numberOf)
        : Base(turnsOf(lines), std::string_view::npos, describe, numberOf) {
        // Long calculations run beside an event loop.
        application();
        for (const std::string_view line : lines) {
            if (line.starts_with("C ")) {
                clientLines_.emplace_back(line.substr(2));
            }
        }
    }

  private:
    static std::vector<Transcript::Turn> turnsOf(const std::vector<std::string_view>& lines) {
        std::vector<Transcript::Turn> turns;
        using Speaker = Transcript::Speaker;
        for (const std::string_view line : lines) {
            const bool fromServer = line.starts_with("S ");
            turns.push_back({fromServer ? Speaker::Server : Speaker::Client,
                             std::string(line.substr(2)) + (fromServer ? "\r\n" : "")});
        }
        return turns;
    }

    std::vector<std::string> clientLines_;
};

} // namespace support
