#pragma once

namespace poplib {
class POP;
}

/** What a session is for. */
enum class AfterLogOn { OneMessage, Listing };

/**
 * Logs on to the member's mailbox, with the mail server, the name and the password that are set at this
 * moment. \throws RuntimeError what poplib::Request::ConnectAndLogOn raises.
 */
void logOn(poplib::POP& pop, AfterLogOn after = AfterLogOn::OneMessage);
