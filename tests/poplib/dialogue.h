#pragma once

#include "components/poplib/pop3_session.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/described_event.h"
#include "tests/support/recorded_exchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace support {

inline int numberOfFailure(const poplib::Event* event, const poplib::Pop3Session& /*session*/) {
    return event == nullptr || std::holds_alternative<poplib::Failed>(*event)
               ? platform::errors::MailServerTrouble
               : 0;
}

/** A dialogue of lines that start with "S " for the server and "C " for the client; where "C " is
 * followed by RecordedExchange::kEncryption, encryption begins. */
class Dialogue : public RecordedExchange<poplib::Pop3Session> {
  public:
    Dialogue(std::initializer_list<std::string_view> lines) : Dialogue(std::vector(lines)) {}

    explicit Dialogue(const std::vector<std::string_view>& lines)
        : RecordedExchange(turnsOf(lines), std::string_view::npos, described, numberOfFailure) {
        // Long calculations run beside an event loop.
        application();
        for (const std::string_view line : lines) {
            if (line.starts_with("C ")) {
                clientLines_.emplace_back(line.substr(2));
            }
        }
    }

    /** Checks that the client has sent its lines of the dialogue, all of them and no other. */
    void expectToBeSaid() {
        collectOutput();
        EXPECT_THAT(sent(), testing::ElementsAreArray(clientLines_));
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
