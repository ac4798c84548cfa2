#pragma once

#include <QString>

/**
 * Prints a message's text, as it is shown, on the system's default printer. Returns when the printer has the
 * whole document. The windows handle events during a long text, so the caller must disable what the user may
 * not start meanwhile.
 * \throws RuntimeError 482 when there is no default printer or it fails.
 */
void printMessageText(const QString& text);
