#pragma once

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/faulty_tls.h"
#include "tests/support/trusted_root.h"

#include <QString>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace support {

/** An SMTP client with an account that trusts testRoot(), and a mailbox whose server offers STARTTLS. */
class EncryptedSmtpTest : public SmtpTest {
  protected:
    /** The spellings whose connection begins in clear and is upgraded. */
    static constexpr std::array<const char*, 2> kUpgrading{"starttls://", ""};

    EncryptedSmtpTest() {
        smtp.Protected = [this](const transport::Protection& how) { protections.push_back(how); };
        smtp.setAccount({"bob", "secret", {}});
        fillIn();
        offerStartTls();
    }

    void offerStartTls() { mailbox.answer("EHLO", "250-mail\r\n250-STARTTLS\r\n250 SIZE\r\n"); }

    /** STARTTLS is accepted, and the handshake follows. */
    void inviteToTls(const TlsIdentity& identity) {
        mailbox.on("STARTTLS", [identity](Peer& peer) {
            peer.send("220 go ahead\r\n");
            peer.beginTls(identity);
        });
    }

    using SmtpTest::send;

    int send(const ScriptedServer& server, const char* scheme) {
        smtp.setHost(QString::fromLatin1(scheme) + server.address());
        return send();
    }

    /** Waits no longer than this for anything. */
    void waitNoLongerThan(std::chrono::milliseconds time) {
        smtplib::Timeouts timeouts;
        timeouts.connection = timeouts.greeting = timeouts.hello = timeouts.quit = time;
        smtp.setTimeouts(timeouts);
    }

    /** No connection has got anything in clear but these commands. */
    static void expectOnlyClearCommands(ScriptedServer& server, const std::vector<std::string>& keywords) {
        const std::size_t connections = server.connections();
        ASSERT_TRUE(server.waitForEndOf(connections));
        EXPECT_EQ(connections, 1U);
        std::vector<std::string> heard = server.keywords();
        // A ClientHello may hold line ends.
        heard.resize(std::min(heard.size(), keywords.size()));
        EXPECT_EQ(heard, keywords);
        for (const std::string& line : server.commands()) {
            for (const char* const keyword : {"AUTH", "MAIL", "RCPT", "DATA"}) {
                EXPECT_FALSE(line.starts_with(keyword)) << line;
            }
        }
    }

    TrustedRoot trusted;
    SmtpMailbox mailbox;
    /** What Protected has told. */
    std::vector<transport::Protection> protections;
};

} // namespace support
