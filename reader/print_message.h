#pragma once

#include <QString>

/**
 * Prints a message's text, as it is shown, on the system's default printer; returns when the printer has the
 * whole document. The windows stay alive during a long text, so whoever calls this sees to it that nothing is
 * begun meanwhile that must not be.
 * \throws RuntimeError 482 when there is no default printer or it fails.
 */
void printMessageText(const QString& text);
