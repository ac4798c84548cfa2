#pragma once

namespace poplib {
class POP;
}

/**
 * Logs on to the mail server and stores the mailbox's size and number of messages in email::mailbox.
 * \throws RuntimeError whatever the log-on raises.
 */
void logOnAndCount(poplib::POP& pop);

/** Gives the main window the title that welcomes the member, and shows it when it is hidden. */
void welcomeOnMainWindow();
