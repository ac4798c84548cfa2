#pragma once

#include "email/messages.h"

#include <QString>

#include <array>
#include <cstdint>

/** Enables Read, Delete and the grid when there are messages, disables them otherwise. */
void UpdateListControls();

/** Empties the list: counters, rows, summary line and controls. */
void ResetMailList();

/** The summary line of the mailbox: the count of messages and their total size in bytes. */
QString totalsText();

/** Clears the summary line, then writes the totals into it. */
void showTotals();

/** Writes the titles into row 0 of the grid. */
void writeTitles();

/** The texts of a message's row: number, date, sender, subject, size. */
std::array<QString, 5> rowTexts(std::int16_t number, const email::MessageSummary& summary);

/** Writes a message's row into the grid, cell by cell. */
void writeRow(std::int16_t number, const email::MessageSummary& summary);
