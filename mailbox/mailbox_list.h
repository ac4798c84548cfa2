#pragma once

#include "email/messages.h"

#include <QString>

#include <array>
#include <cstdint>

/** Enables Read, Delete and the grid when there are messages, disables them otherwise. */
void UpdateListControls();

/** Empties the list: counters, rows, summary line and controls. */
void ResetMailList();

/** The summary line of the mailbox: the count and the bytes as the server reports them. */
QString totalsText();

/** Sets the summary line to the empty text and then to the totals. */
void showTotals();

/** Writes the titles into row 0 of the grid. */
void writeTitles();

/** The texts of a message's row: number, date, sender, subject, size. */
std::array<QString, 5> rowTexts(std::int16_t number, const email::MessageSummary& summary);

/** Writes a message's row into the grid, cell by cell. */
void writeRow(std::int16_t number, const email::MessageSummary& summary);
