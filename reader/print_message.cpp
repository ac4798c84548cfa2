#include "reader/print_message.h"

#include "message/word_wrap.h"
#include "platform/text_printer.h"
#include "platform/window_turns.h"

void printMessageText(const QString& text) {
    // The windows handle events between pieces, and a handler may change the caller's text.
    const QString printed = text; // NOLINT(performance-unnecessary-copy-initialization)
    platform::WindowTurns turns;
    const auto printer = platform::makeDefaultPrinter();
    printer->betweenPieces = [&turns] { turns.giveWhenDue(); };
    printText(*printer, printed);
}
