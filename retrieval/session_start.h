#pragma once

namespace poplib {
class POP;
}

/** Logs on to the mail server and takes its totals. \throws RuntimeError whatever the log-on raises. */
void logOnAndCount(poplib::POP& pop);

/** Shows the main window with the title that welcomes the member. */
void welcomeOnMainWindow();
