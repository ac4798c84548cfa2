#include "reader/print_message.h"

#include "message/word_wrap.h"
#include "platform/text_printer.h"
#include "platform/window_turns.h"

void printMessageText(const QString& text) {
    // During a turn of the windows somebody may change the text that was handed in.
    const QString printed = text; // NOLINT(performance-unnecessary-copy-initialization)
    platform::WindowTurns turns;
    const auto printer = platform::makeDefaultPrinter();
    printer->betweenPieces = [&turns] { turns.giveWhenDue(); };
    printText(*printer, printed);
}
