#pragma once

#include "tests/poplib/pop_fixture.h"
#include "tests/support/faulty_tls.h"
#include "tests/support/trusted_root.h"

#include <QString>

#include <array>
#include <string>
#include <vector>

namespace support {

/** A POP3 client that trusts testRoot(), and a mailbox whose server offers STLS. */
class EncryptedPopTest : public PopTest {
  protected:
    /** The spellings whose connection begins in clear and is upgraded. */
    static constexpr std::array<const char*, 2> kUpgrading{"starttls://", ""};

    EncryptedPopTest() {
        pop.Protected = [this](const transport::Protection& how) { protections.push_back(how); };
        offerStls();
    }

    void offerStls() { mailbox.answer("CAPA", "+OK\r\nUSER\r\nSTLS\r\n.\r\n"); }

    /** STLS is accepted, and the handshake follows. */
    void inviteToTls(const TlsIdentity& identity) {
        mailbox.on("STLS", [identity](Peer& peer) {
            peer.send("+OK begin\r\n");
            peer.beginTls(identity);
        });
    }

    using PopTest::logOn;

    int logOn(const ScriptedServer& server, const char* scheme) {
        name(server, scheme);
        return logOn();
    }

    void name(const ScriptedServer& server, const char* scheme) {
        pop.setMailServer(QString::fromLatin1(scheme) + server.address());
    }

    /** No connection has got anything in clear but these commands. */
    static void expectOnlyClearCommands(ScriptedServer& server, const std::vector<std::string>& commands) {
        const std::size_t connections = server.connections();
        ASSERT_TRUE(server.waitForEndOf(connections));
        EXPECT_EQ(connections, 1U);
        std::vector<std::string> heard = server.commands();
        // A ClientHello may hold line ends.
        heard.resize(std::min(heard.size(), commands.size()));
        EXPECT_EQ(heard, commands);
        for (const std::string& line : server.commands()) {
            for (const char* const keyword : {"USER", "PASS", "AUTH", "APOP", "QUIT"}) {
                EXPECT_FALSE(line.starts_with(keyword)) << line;
            }
        }
    }

    TrustedRoot trusted;
    Pop3Mailbox mailbox;
    /** What Protected has told. */
    std::vector<transport::Protection> protections;
};

} // namespace support
