#pragma once

#include "components/poplib/pop3_session.h"
#include "platform/runtime_error.h"
#include "tests/support/described_event.h"
#include "tests/support/line_dialogue.h"

#include <initializer_list>
#include <string_view>
#include <variant>
#include <vector>

namespace support {

inline int numberOfFailure(const poplib::Event* event, const poplib::Pop3Session& /*session*/) {
    return event == nullptr || std::holds_alternative<poplib::Failed>(*event)
               ? platform::errors::MailServerTrouble
               : 0;
}

class Dialogue : public LineDialogue<poplib::Pop3Session> {
  public:
    Dialogue(std::initializer_list<std::string_view> lines) : Dialogue(std::vector(lines)) {}

    explicit Dialogue(const std::vector<std::string_view>& lines)
        : LineDialogue(lines, described, numberOfFailure) {}
};

} // namespace support
