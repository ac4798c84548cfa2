#include "tests/support/application.h"
#include "tests/support/openssl_client.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"

#include <QProcess>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace {

using support::OpensslClient;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** The built demo server with one message; it ends with the test. */
class DemoServer : public testing::Test {
  protected:
    DemoServer() {
        support::application();
        folder.write("one.eml", "Subject: one\n\nbody\n");
    }

    ~DemoServer() override {
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), 0);
    }

    /** Starts it and returns the line that it prints. */
    std::string start(QStringList options) {
        options << QStringLiteral("--mail") << folder.qtPath("") << QStringLiteral("--until-stdin-closes");
        process.start(QString::fromStdString(support::buildFolder() + "/demo/brindlewake_demo_server"),
                      options);
        while (!process.canReadLine() && process.waitForReadyRead()) {
        }
        std::string line = process.readLine().toStdString();
        std::istringstream words(line);
        std::string name;
        for (std::uint16_t* const port : {&pop, &smtp, &pops, &smtps}) {
            words >> name >> *port;
        }
        return line;
    }

    /** The same with encryption. */
    void startEncrypting() {
        EXPECT_THAT(start({QStringLiteral("--root-certificate"), folder.qtPath("root.pem")}),
                    testing::MatchesRegex("POP3 [0-9]+ SMTP [0-9]+ POP3S [0-9]+ SMTPS [0-9]+\n"));
    }

    support::ClientOptions trusting() const { return {folder.read("root.pem"), "localhost"}; }

    support::TemporaryFolder folder;
    QProcess process;
    std::uint16_t pop = 0;
    std::uint16_t smtp = 0;
    std::uint16_t pops = 0;
    std::uint16_t smtps = 0;
};

/** Sends a line and returns the answer, up to the line that starts so. */
std::string ask(OpensslClient& client, const std::string& line, const std::string& lastLine) {
    client.sendLine(line);
    std::string answer;
    std::string part;
    do {
        part = client.readLine();
        answer += part;
    } while (!part.empty() && !part.starts_with(lastLine));
    return answer;
}

TEST_F(DemoServer, OffersNoEncryptionUnlessItIsAskedFor) {
    EXPECT_THAT(start({}), testing::MatchesRegex("POP3 [0-9]+ SMTP [0-9]+\n"));
    OpensslClient reader(pop);
    EXPECT_EQ(reader.readLine(), "+OK ready\r\n");
    EXPECT_EQ(ask(reader, "CAPA", ".\r\n"), "+OK this server can\r\nUSER\r\nTOP\r\nUIDL\r\nPIPELINING\r\n"
                                            "RESP-CODES\r\nAUTH-RESP-CODE\r\n.\r\n");
    OpensslClient sender(smtp);
    EXPECT_EQ(sender.readLine(), "220 demo.example.org ESMTP ready\r\n");
    EXPECT_EQ(ask(sender, "EHLO client", "250 "),
              "250-demo.example.org\r\n250-SIZE 52428800\r\n250-8BITMIME\r\n"
              "250-ENHANCEDSTATUSCODES\r\n250 PIPELINING\r\n");
}

TEST_F(DemoServer, UpgradesPop3) {
    startEncrypting();
    OpensslClient client(pop, trusting());
    EXPECT_EQ(client.readLine(), "+OK ready\r\n");
    EXPECT_THAT(ask(client, "CAPA", ".\r\n"), HasSubstr("\r\nSTLS\r\nSASL SCRAM-SHA-256 "));
    EXPECT_EQ(ask(client, "STLS", "+OK"), "+OK begin TLS\r\n");
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_THAT(ask(client, "CAPA", ".\r\n"), Not(HasSubstr("STLS")));
    EXPECT_THAT(ask(client, "AUTH PLAIN AG1heWEAZGVtbw==", "+OK"), StartsWith("+OK"));
    EXPECT_EQ(ask(client, "RETR 1", ".\r\n"), "+OK 22 octets\r\nSubject: one\r\n\r\nbody\r\n.\r\n");
    EXPECT_THAT(ask(client, "QUIT", "+OK"), StartsWith("+OK"));
    EXPECT_EQ(client.readAll(), "");
    EXPECT_TRUE(client.sawCloseNotify());
}

TEST_F(DemoServer, ForgetsWhatCameInClearBehindStls) {
    startEncrypting();
    OpensslClient client(pop, trusting());
    client.readLine();
    EXPECT_EQ(ask(client, "STLS\r\nUSER maya", "+OK"), "+OK begin TLS\r\n");
    ASSERT_TRUE(client.beginTls()) << client.failure();
    EXPECT_EQ(ask(client, "PASS demo", "-ERR"), "-ERR the user name comes first\r\n");
}

TEST_F(DemoServer, SpeaksTlsFromTheFirstByte) {
    startEncrypting();
    OpensslClient reader(pops, trusting());
    ASSERT_TRUE(reader.beginTls()) << reader.failure();
    EXPECT_EQ(reader.readLine(), "+OK ready\r\n");
    EXPECT_THAT(ask(reader, "CAPA", ".\r\n"), Not(HasSubstr("STLS")));
    OpensslClient sender(smtps, trusting());
    ASSERT_TRUE(sender.beginTls()) << sender.failure();
    EXPECT_EQ(sender.readLine(), "220 demo.example.org ESMTP ready\r\n");
    EXPECT_THAT(ask(sender, "EHLO client", "250 "), Not(HasSubstr("STARTTLS")));
}

TEST_F(DemoServer, TakesAndGivesALargeMessageOverTls) {
    startEncrypting();
    std::string text;
    for (int line = 0; line < 14'000; ++line) {
        text += std::string(70, 'x') + "\r\n";
    }
    OpensslClient sender(smtp, trusting());
    sender.readLine();
    ask(sender, "EHLO client", "250 ");
    EXPECT_THAT(ask(sender, "STARTTLS", "220 "), StartsWith("220"));
    ASSERT_TRUE(sender.beginTls()) << sender.failure();
    ask(sender, "EHLO client", "250 ");
    EXPECT_THAT(ask(sender, "AUTH PLAIN AG1heWEAZGVtbw==", "235 "), StartsWith("235"));
    ask(sender, "MAIL FROM:<maya@example.org>", "250 ");
    ask(sender, "RCPT TO:<maya@example.org>", "250 ");
    EXPECT_THAT(ask(sender, "DATA", "354 "), StartsWith("354"));
    EXPECT_THAT(ask(sender, text + ".", "250 "), StartsWith("250"));
    OpensslClient reader(pops, trusting());
    ASSERT_TRUE(reader.beginTls()) << reader.failure();
    reader.readLine();
    ask(reader, "USER maya", "+OK");
    ask(reader, "PASS demo", "+OK");
    const std::string message = ask(reader, "RETR 2", ".\r\n");
    EXPECT_THAT(message, HasSubstr("Received: from client by demo.example.org with ESMTPSA; "));
    EXPECT_TRUE(message.ends_with("\r\n" + text + ".\r\n"));
}

TEST_F(DemoServer, EndsAConnectionThatSpeaksNoTls) {
    startEncrypting();
    OpensslClient client(pops, trusting());
    client.sendLine("CAPA");
    EXPECT_EQ(client.readAll().find("+OK"), std::string::npos);
}

} // namespace
