#pragma once

#include <QSslConfiguration>

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

/**
 * Makes a certificate for localhost, 127.0.0.1 and ::1, which is valid for a week, and writes the root that
 * has signed it into the file, unless its name is empty; a client that trusts that root trusts this server.
 * The root's key is gone when this returns. \throws std::runtime_error when TLS is missing or the file cannot
 * be written.
 */
QSslConfiguration newIdentity(const std::filesystem::path& rootCertificate);

/** The ways to log on, beside USER and PASS, that a server which encrypts offers. */
std::vector<std::string> mechanisms();

} // namespace demo
