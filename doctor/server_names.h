#pragma once

#include "components/transport/server_name.h"
#include "doctor/report.h"

#include <QString>

#include <optional>

namespace doctor {

/** What a server's name in the settings means: host, port, and what its spelling promises. */
QString meaningOfName(const QString& typed, const transport::DefaultPorts& ports);

/** What the spelling of a server's name promises. */
QString promiseOf(const transport::ServerName& server);

/** What is wrong with a name that no server can have, and with a port that its scheme contradicts. */
std::vector<Finding> findingsOfPopServer(const QString& typed, int line);
std::vector<Finding> findingsOfSmtpServer(const QString& typed, int line);

} // namespace doctor
