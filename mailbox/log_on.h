#pragma once

namespace poplib {
class POP;
}

/**
 * Logs on to the member's mailbox: with the mail server, the name and the password of this run, whichever
 * they are by now. \throws RuntimeError what poplib::Request::ConnectAndLogOn raises.
 */
void logOn(poplib::POP& pop);
