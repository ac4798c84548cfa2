#pragma once

namespace printing {

/**
 * True when CUPS refused or never received this thread's last request. Qt hands a document over to CUPS and
 * does not report the reply. False where CUPS is not installed.
 */
bool cupsRefused();

} // namespace printing
