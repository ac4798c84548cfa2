#pragma once

#include <QStringView>

namespace platform {
class TextPrinter;
}

/** The family of the letters that messages are printed in, where the system has it. */
inline constexpr const char* kPrintedFamily = "Arial";

/**
 * The word splitter: removes the first word, all that stands before the delimiter, from the text and returns
 * it. The delimiter's first character is removed with it. Without a delimiter the whole text is the word, and
 * nothing is left.
 */
QStringView takeWord(QStringView& text, QStringView delimiter);

/**
 * Prints the text as one document with simple word wrapping. Words are separated by single spaces only.
 * Between two spaces in a row is an empty word, and line breaks stay inside their words and reach the printer
 * as they are. A word that would come nearer to the right edge than the width of eight wide letters goes to
 * the next line; it is never cut. The printer's own page breaks are the only ones.
 * \throws RuntimeError 482 when the printer fails.
 */
void printText(platform::TextPrinter& printer, QStringView text);
