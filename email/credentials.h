#pragma once

#include <QString>

namespace email {

/** Who the member is, kept from the log-on for every later session. */
struct Credentials {
    /** Whether the server has accepted the name and the password once in this run. */
    bool LoggedOn = false;
    QString UserName;
    /** The name with its host, where it was typed so: some servers know their users by it. */
    QString NameAtHost;
    QString Password;
};

/** Shared by all windows for the whole run, and used on the user-interface thread only. */
inline Credentials credentials;

} // namespace email
