#pragma once

#include "email/messages.h"

#include <cstdint>
#include <functional>

namespace poplib {
class POP;
}

/**
 * Fetches the summary of the current message (its size, header and first body lines) and writes its row. When
 * memory runs out for a message, its row shows placeholders.
 * \throws RuntimeError 9 when the message's number lies outside the table, and whatever a request raises.
 */
void fetchSummary(poplib::POP& pop);

/** Tells the client which messages fetchSummary() is going to fetch, so that it can ask for all at once. */
void askAhead(poplib::POP& pop, std::int16_t first, std::int16_t last);

/**
 * Fetches once more the summaries of which the server has refused the first lines in between; before each of
 * them calls the function, if there is one, with CurrentMessage set. CurrentMessage is afterwards what it was
 * before. \throws RuntimeError as fetchSummary() does.
 */
void fetchLateSummaries(poplib::POP& pop, const std::function<void()>& beforeEach = nullptr);

/** Whether no message can have a higher number, so that counting on would begin anew. */
constexpr bool isLastNumber(std::int16_t number) noexcept {
    return number == email::MessageTable::kLargest;
}

/** Assigns to every row of the grid the message with the row's number. */
void numberTheRows();
