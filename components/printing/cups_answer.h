#pragma once

namespace printing {

/**
 * True when the printing system refused, or never got, what this thread asked of it last. Qt hands a document
 * over without a word about the answer. False where no CUPS is in use.
 */
bool cupsRefused();

} // namespace printing
