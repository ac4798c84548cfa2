#pragma once

#include "components/poplib/pop.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/described_event.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/** A short message from this sender about this subject. */
inline std::string message(const std::string& name) {
    return "From: " + name + "@example.org\r\nSubject: " + name + "\r\n\r\ntext\r\n";
}

/** A POP3 component that remembers what it raises. */
class PopTest : public testing::Test {
  protected:
    PopTest() {
        application();
        pop.setLoginUser("bob");
        pop.setLoginPassword("secret");
        pop.Header = [this](const std::string& field, const std::string& value) {
            content.push_back(describedHeader(field, value));
        };
        pop.Transfer = [this](std::int32_t bytesTransferred, const std::string& text) {
            content.push_back(describedBody(bytesTransferred, text));
        };
        pop.PITrail = [this](poplib::Direction direction, const std::string& message) {
            trail.push_back((direction == poplib::Direction::ToServer ? "> " : "< ") + message);
        };
    }

    /** The number of the error that the request raises; 0 for none. */
    int request(poplib::Request code) {
        return platform::errorNumberOf([&] { pop.issueRequest(code); });
    }

    int logOn() { return request(poplib::Request::ConnectAndLogOn); }

    int logOn(const ScriptedServer& server) {
        pop.setMailServer(server.address());
        return logOn();
    }

    int logOff() { return request(poplib::Request::LogOffAndDisconnect); }

    int retrieve(std::int16_t number, std::int32_t bodyLineLimit = 25) {
        pop.setCurrentMessage(number);
        pop.setBodyLineLimit(bodyLineLimit);
        return request(poplib::Request::RetrieveCurrentMessage);
    }

    int remove(std::int16_t number) {
        pop.setCurrentMessage(number);
        return request(poplib::Request::DeleteCurrentMessage);
    }

    /** The size from the server's reply, 0 when it refuses, or the negative number of the error. */
    std::int32_t sizeOf(std::int16_t number) {
        pop.setCurrentMessage(number);
        std::int32_t size = 0;
        const int error = platform::errorNumberOf([&] { size = pop.currentMessageSize().value_or(0); });
        return error == 0 ? size : -error;
    }

    /** Logs on, lists all messages and logs off, as the login window does; returns the first error, or 0. */
    int listing() {
        if (const int error = logOn(); error != 0) {
            return error;
        }
        for (std::int16_t number = 1; number <= pop.messageCount(); ++number) {
            if (const std::int32_t size = sizeOf(number); size < 0) {
                return -size;
            }
            if (const int error = retrieve(number); error != 0) {
                return error;
            }
        }
        return logOff();
    }

    POPLib::POP pop;
    /** Header and body events, as dialogues write them. */
    std::vector<std::string> content;
    /** Each command behind "> ", each reply behind "< ". */
    std::vector<std::string> trail;
};

} // namespace support
