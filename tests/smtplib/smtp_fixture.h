#pragma once

#include "components/smtplib/smtp.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/scripted_server.h"
#include "tests/support/smtp_script.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace support {

/** An SMTP component that remembers what it raises. */
class SmtpTest : public testing::Test {
  protected:
    SmtpTest() {
        application();
        smtp.setBlocking(true);
        smtp.PITrail = [this](smtplib::Direction direction, const std::string& message) {
            trail.push_back((direction == smtplib::Direction::ToServer ? "> " : "< ") + message);
        };
        smtp.Progress = [this](std::int64_t bytesDone, std::int64_t bytesTotal) {
            progress.emplace_back(bytesDone, bytesTotal);
        };
    }

    /** A message from Bob to Ann and Carl. */
    void fillIn() {
        smtp.setSender("bob@example.org");
        smtp.setRecipients("Ann <ann@example.org>");
        smtp.setCopies("carl@example.org");
        smtp.setSubject("Hello");
        smtp.setBody("text\r\n");
    }

    /** The number of the error that the request raises; 0 for none. */
    int request(smtplib::Request code) {
        return platform::errorNumberOf([&] { smtp.issueRequest(code); });
    }

    int open() { return request(smtplib::Request::OpenConnection); }

    int open(const ScriptedServer& server) {
        smtp.setHost(server.address());
        return open();
    }

    int transmit() { return request(smtplib::Request::TransmitMessage); }

    int close() { return request(smtplib::Request::CloseConnection); }

    /** Opens, transmits and closes, as the compose window does; returns the first error, or 0. */
    int send() {
        if (const int error = open(); error != 0) {
            return error;
        }
        if (const int error = transmit(); error != 0) {
            return error;
        }
        return close();
    }

    int send(const ScriptedServer& server) {
        smtp.setHost(server.address());
        return send();
    }

    SMTPLib::SMTP smtp;
    /** Each command behind "> ", each line of a reply behind "< ". */
    std::vector<std::string> trail;
    std::vector<std::pair<std::int64_t, std::int64_t>> progress;
};

} // namespace support
