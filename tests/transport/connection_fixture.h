#pragma once

#include "components/transport/connection.h"
#include "tests/support/application.h"
#include "tests/support/scripted_server.h"

#include <QDeadlineTimer>
#include <QString>
#include <gtest/gtest.h>

namespace support {

/** A connection that is not open yet. */
class ConnectionFixture : public testing::Test {
  protected:
    ConnectionFixture() { application(); }

    static QDeadlineTimer soon() { return {ScriptedServer::kTimeLimit}; }

    transport::Outcome open(const ScriptedServer& server) {
        return connection.open({QStringLiteral("127.0.0.1"), server.port()}, soon());
    }

    transport::Connection connection;
};

} // namespace support
