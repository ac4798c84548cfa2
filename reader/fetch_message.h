#pragma once

/**
 * Fetches the whole message `email::mailbox.CurrentMessage` into its summary, in a session of its own. The
 * main window's buttons and list are disabled meanwhile, and its progress bar shows the bytes received.
 * \throws RuntimeError 9 for a number outside the table, 20342 when the server does not list the message's
 * size or refuses the message, 5 for a Content-Type whose boundary is not in quotes, and whatever the POP3
 * client raises. The summary is then as it was, and the buttons and the list stay disabled.
 */
void fetchMessage();
