#include "components/poplib/pop.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/dovecot_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using platform::errorNumberOf;
using poplib::Request;
using support::DovecotServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

std::string plainMessage(int number) {
    return "From: a@example.org\r\nSubject: message " + std::to_string(number) + "\r\n\r\nbody " +
           std::to_string(number) + "\r\n";
}

/** A message of every shape that Dovecot hands out as it got it. */
std::vector<std::string> messagesOfAllShapes() {
    const std::string folded = "Subject: folded\r\n\tonce\r\n  twice\r\nContent-Type: multipart/mixed;\r\n"
                               " boundary=\"XyZ\"\r\n\r\n--XyZ\r\n\r\ntext\r\n--XyZ--\r\n";
    std::string manyLines = "Subject: many\r\n\r\n";
    for (int line = 1; line <= 100; ++line) {
        manyLines += "line " + std::to_string(line) + "\r\n";
    }
    return {plainMessage(1),
            "Subject: dots\r\n\r\n.\r\n..\r\n.x\r\n..x\r\n...\r\nx.\r\n.\r\n",
            "Subject: answers\r\n\r\n+OK\r\n-ERR no\r\n+OK 7 octets\r\n",
            "Subject: no body\r\n\r\n",
            "Subject: only empty lines\r\n\r\n\r\n\r\n\r\n",
            "\r\nno header at all\r\n",
            folded,
            "Subject: eight bits \xE4\xF6\xFC\r\n\r\ngr\xC3\xBC\xC3\x9F \xFF\xFE\r\n",
            "Subject: long line\r\n\r\n" + std::string(100'000, 'x') + "\r\n",
            manyLines,
            "Subject: large\r\n\r\n" + [] {
                std::string body;
                while (body.size() < 3'000'000) {
                    body += ".a line of a large message, " + std::to_string(body.size()) + "\r\n";
                }
                return body;
            }()};
}

/** A message put together again from the events of its retrieval. */
class Collected {
  public:
    explicit Collected(POPLib::POP& pop) {
        pop.Header = [this](const std::string& field, const std::string& value) {
            headers_.emplace_back(field, value);
        };
        pop.Transfer = [this](std::int32_t bytes, const std::string& text) {
            bytesTransferred_ = bytes;
            lines_.push_back(text);
        };
    }

    void forget() {
        headers_.clear();
        lines_.clear();
        bytesTransferred_ = 0;
    }

    /** Every value loses the one space behind its colon on the way, so that is put back. */
    std::string header() const {
        std::string text;
        for (const auto& [field, value] : headers_) {
            text += field;
            text += field.empty() ? "" : ": ";
            text += value;
            text += "\r\n";
        }
        return text;
    }

    std::string body() const {
        std::string text;
        for (const std::string& line : lines_) {
            text += line + "\r\n";
        }
        return text;
    }

    std::string message() const { return header() + "\r\n" + body(); }

    const std::vector<std::string>& lines() const { return lines_; }

    std::int32_t bytesTransferred() const { return bytesTransferred_; }

  private:
    std::vector<std::pair<std::string, std::string>> headers_;
    std::vector<std::string> lines_;
    std::int32_t bytesTransferred_ = 0;
};

class Dovecot : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        support::application();
        startServer({});
    }

    void startServer(const DovecotServer::Account& account) {
        server_.emplace(account);
        pop_.setMailServer(server_->address());
        pop_.setLoginUser(account.user);
        pop_.setLoginPassword(account.password);
    }

    void logOn() { pop_.issueRequest(Request::ConnectAndLogOn); }

    void logOff() { pop_.issueRequest(Request::LogOffAndDisconnect); }

    int logOnError() {
        return errorNumberOf([this] { logOn(); });
    }

    void retrieve(int number, std::int32_t bodyLines) {
        pop_.setCurrentMessage(static_cast<std::int16_t>(number));
        pop_.setBodyLineLimit(bodyLines);
        pop_.issueRequest(Request::RetrieveCurrentMessage);
    }

    void remove(int number) {
        pop_.setCurrentMessage(static_cast<std::int16_t>(number));
        pop_.issueRequest(Request::DeleteCurrentMessage);
    }

    /** Lists all messages, as the login does. */
    static void listWith(POPLib::POP& pop) {
        pop.issueRequest(Request::ConnectAndLogOn);
        pop.setBodyLineLimit(25);
        for (std::int16_t number = 1; number <= pop.messageCount(); ++number) {
            pop.setCurrentMessage(number);
            pop.currentMessageSize();
            pop.issueRequest(Request::RetrieveCurrentMessage);
        }
        pop.issueRequest(Request::LogOffAndDisconnect);
    }

    std::optional<DovecotServer> server_;
    POPLib::POP pop_;
};

TEST_F(Dovecot, AnEmptyMailboxHasNoMessagesAndNoBytes) {
    logOn();
    EXPECT_EQ(pop_.messageCount(), 0);
    EXPECT_EQ(pop_.mailboxSize(), 0);
    logOff();
}

TEST_F(Dovecot, CountAndSizeAreTheMailboxs) {
    std::size_t bytes = 0;
    for (int number = 1; number <= 3; ++number) {
        server_->deliver(plainMessage(number));
        bytes += plainMessage(number).size();
    }
    logOn();
    EXPECT_EQ(pop_.messageCount(), 3);
    EXPECT_EQ(pop_.mailboxSize(), static_cast<std::int32_t>(bytes));
    logOff();
}

TEST_F(Dovecot, TheSizeOfEveryMessageIsItsLength) {
    const std::vector<std::string> messages = messagesOfAllShapes();
    for (const std::string& message : messages) {
        server_->deliver(message);
    }
    logOn();
    ASSERT_EQ(pop_.messageCount(), static_cast<int>(messages.size()));
    for (std::size_t index = 0; index < messages.size(); ++index) {
        pop_.setCurrentMessage(static_cast<std::int16_t>(index + 1));
        EXPECT_EQ(pop_.currentMessageSize(), static_cast<std::int32_t>(messages[index].size())) << index;
    }
    logOff();
}

TEST_F(Dovecot, WholeMessagesOfAllShapesComeByteForByte) {
    const std::vector<std::string> messages = messagesOfAllShapes();
    for (const std::string& message : messages) {
        server_->deliver(message);
    }
    Collected collected(pop_);
    logOn();
    for (std::size_t index = 0; index < messages.size(); ++index) {
        collected.forget();
        retrieve(static_cast<int>(index + 1), 0);
        EXPECT_TRUE(collected.message() == messages[index]) << "message " << index + 1;
    }
    EXPECT_EQ(collected.bytesTransferred(), static_cast<std::int32_t>(messages.back().size()));
    logOff();
    EXPECT_EQ(server_->messages(), messages);
}

TEST_F(Dovecot, AListingBringsTheHeaderAndAtMostTwentyFiveLines) {
    const std::vector<std::string> messages = messagesOfAllShapes();
    for (const std::string& message : messages) {
        server_->deliver(message);
    }
    Collected collected(pop_);
    logOn();
    for (std::size_t index = 0; index < messages.size(); ++index) {
        collected.forget();
        retrieve(static_cast<int>(index + 1), 25);
        EXPECT_LE(collected.lines().size(), 25U) << index + 1;
        EXPECT_TRUE(messages[index].starts_with(collected.message())) << "message " << index + 1;
        const bool isWhole = collected.message() == messages[index];
        EXPECT_TRUE(isWhole || collected.lines().size() == 25) << index + 1;
    }
    logOff();
}

TEST_F(Dovecot, AWrongPasswordIsRefusedAndMayBeRetried) {
    server_->deliver(plainMessage(1));
    pop_.setLoginPassword("wrong");
    EXPECT_EQ(logOnError(), errors::LogOnRefused);
    logOff();
    EXPECT_EQ(logOnError(), errors::LogOnRefused);
    logOff();
    pop_.setLoginPassword("secret");
    EXPECT_EQ(logOnError(), 0);
    EXPECT_EQ(pop_.messageCount(), 1);
    logOff();
}

TEST_F(Dovecot, AnUnknownUserIsRefused) {
    pop_.setLoginUser("nobody-of-this-name");
    EXPECT_EQ(logOnError(), errors::LogOnRefused);
    logOff();
}

TEST_F(Dovecot, SpacesOfAPasswordArePartOfIt) {
    startServer({"carol@example.org", " pass word  x "});
    EXPECT_EQ(logOnError(), 0);
    logOff();
    pop_.setLoginPassword("pass word  x");
    EXPECT_EQ(logOnError(), errors::LogOnRefused);
    logOff();
}

TEST_F(Dovecot, ALogOnWhileASessionIsOpenIsRefusedAndHarmsNothing) {
    server_->deliver(plainMessage(1));
    logOn();
    EXPECT_EQ(logOnError(), errors::MailServerBusy);
    Collected collected(pop_);
    retrieve(1, 0);
    EXPECT_EQ(collected.message(), plainMessage(1));
    logOff();
}

TEST_F(Dovecot, ADeletedMessageIsGoneAfterLogOff) {
    for (int number = 1; number <= 3; ++number) {
        server_->deliver(plainMessage(number));
    }
    listWith(pop_);
    logOn();
    remove(2);
    logOff();
    EXPECT_THAT(server_->messages(), ElementsAre(plainMessage(1), plainMessage(3)));
    logOn();
    EXPECT_EQ(pop_.messageCount(), 2);
    logOff();
}

TEST_F(Dovecot, ADeletionIsForgottenWhenTheConnectionDropsBeforeLogOff) {
    server_->deliver(plainMessage(1));
    {
        POPLib::POP leaving;
        leaving.setMailServer(server_->address());
        leaving.setLoginUser("bob");
        leaving.setLoginPassword("secret");
        listWith(leaving);
        leaving.issueRequest(Request::ConnectAndLogOn);
        leaving.setCurrentMessage(1);
        leaving.issueRequest(Request::DeleteCurrentMessage);
    }
    logOn();
    EXPECT_EQ(pop_.messageCount(), 1);
    logOff();
    EXPECT_THAT(server_->messages(), ElementsAre(plainMessage(1)));
}

TEST_F(Dovecot, AMessageThatIsNotThereCannotBeDeleted) {
    server_->deliver(plainMessage(1));
    listWith(pop_);
    logOn();
    EXPECT_EQ(errorNumberOf([this] { remove(2); }), errors::AnotherMessage);
    EXPECT_THAT(server_->messages(), ElementsAre(plainMessage(1)));
}

TEST_F(Dovecot, WhatAnotherClientDeletedDoesNotLeadToAWrongDeletion) {
    for (int number = 1; number <= 4; ++number) {
        server_->deliver(plainMessage(number));
    }
    listWith(pop_);
    POPLib::POP other;
    other.setMailServer(server_->address());
    other.setLoginUser("bob");
    other.setLoginPassword("secret");
    listWith(other);
    other.issueRequest(Request::ConnectAndLogOn);
    other.setCurrentMessage(1);
    other.issueRequest(Request::DeleteCurrentMessage);
    other.issueRequest(Request::LogOffAndDisconnect);
    server_->deliver(plainMessage(5));

    logOn();
    EXPECT_EQ(errorNumberOf([this] { remove(3); }), errors::AnotherMessage);
    EXPECT_THAT(server_->messages(), SizeIs(4));
    listWith(pop_);
    logOn();
    remove(3);
    logOff();
    EXPECT_THAT(server_->messages(), ElementsAre(plainMessage(2), plainMessage(3), plainMessage(5)));
}

TEST_F(Dovecot, AMessageThatIsNotThereHasNoSizeAndNoEvents) {
    server_->deliver(plainMessage(1));
    Collected collected(pop_);
    logOn();
    pop_.setCurrentMessage(2);
    EXPECT_EQ(pop_.currentMessageSize(), std::nullopt);
    retrieve(2, 25);
    EXPECT_EQ(collected.message(), "\r\n");
    retrieve(1, 25);
    EXPECT_EQ(collected.message(), plainMessage(1));
    logOff();
}

TEST_F(Dovecot, TwoHundredMessagesAreListedInOrder) {
    for (int number = 1; number <= 200; ++number) {
        server_->deliver(plainMessage(number));
    }
    Collected collected(pop_);
    logOn();
    ASSERT_EQ(pop_.messageCount(), 200);
    for (int number = 1; number <= 200; ++number) {
        collected.forget();
        retrieve(number, 25);
        ASSERT_EQ(collected.message(), plainMessage(number));
    }
    logOff();
}

TEST_F(Dovecot, MailThatArrivesLaterIsSeenByTheNextSession) {
    server_->deliver(plainMessage(1));
    logOn();
    server_->deliver(plainMessage(2));
    EXPECT_EQ(pop_.messageCount(), 1);
    logOff();
    logOn();
    EXPECT_EQ(pop_.messageCount(), 2);
    logOff();
}

TEST_F(Dovecot, AServerThatDiesEndsTheRequestWithTrouble) {
    server_->deliver(plainMessage(1));
    logOn();
    server_.reset();
    EXPECT_EQ(errorNumberOf([this] { retrieve(1, 25); }), errors::MailServerTrouble);
    EXPECT_EQ(logOnError(), errors::ConnectionRefused);
}

TEST_F(Dovecot, ThePasswordIsNeverInTheTrail) {
    std::vector<std::string> trail;
    pop_.PITrail = [&trail](poplib::Direction, const std::string& message) { trail.push_back(message); };
    logOn();
    logOff();
    EXPECT_THAT(trail, testing::Contains("PASS ****"));
    EXPECT_THAT(trail, testing::Each(testing::Not(testing::HasSubstr("secret"))));
}

} // namespace
