#pragma once

namespace poplib {
class POP;
}

/**
 * Fetches the summary of the current message, its size, header and first body lines, and writes its row. A
 * message for which memory fails keeps its placeholders.
 * \throws RuntimeError 9 when the message's number lies outside the table, and whatever a request raises.
 */
void fetchSummary(poplib::POP& pop);

/** Lets every row of the grid stand for the message of its own number. */
void numberTheRows();
