#pragma once

namespace poplib {
class POP;
}

/**
 * Fetches the summary of the current message (its size, header and first body lines) and writes its row. When
 * memory runs out for a message, its row shows placeholders.
 * \throws RuntimeError 9 when the message's number lies outside the table, and whatever a request raises.
 */
void fetchSummary(poplib::POP& pop);

/** Assigns to every row of the grid the message with the row's number. */
void numberTheRows();
