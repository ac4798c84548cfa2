#pragma once

#include "email/settings.h"

#include <QString>

namespace email {

/**
 * Takes the host of a name that was typed as name, "@", host: it is both servers and the senders' domain
 * until the program ends. The settings file is not to hear of it.
 */
void useTypedHost(const QString& host);

/** The settings as the file has them, whatever host was typed: for the setup window, which writes them. */
Settings settingsOfFile();

} // namespace email
