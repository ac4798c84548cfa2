#pragma once

#include <QString>

#include <algorithm>
#include <array>
#include <cstddef>

/** The message box that reports an error. */
struct FailureBox {
    /** "%1" stands for the error's number. Without a text there is no box. */
    const char* text;
    /** What follows the institution's name in the title. */
    const char* titleEnding;
};

/** How one error of a session with the mail server is reported, and what happens next. */
template <class Then>
struct Failure {
    int error;
    FailureBox box;
    Then then;
};

/** The number in the last row of a table, which applies to all errors that have no row of their own. */
constexpr int kAnyOtherError = 0;

/** Returns the row of this error, or the last row when it has none. */
template <class Then, std::size_t rows>
const Failure<Then>& failureOf(const std::array<Failure<Then>, rows>& table, int error) {
    return *std::find_if(table.begin(), table.end() - 1,
                         [error](const Failure<Then>& row) { return row.error == error; });
}

/** The box's text with the error's number; empty where there is no box. */
QString textOf(const FailureBox& box, int error);

/** Shows the box, if it has a text, and waits until the user answers it. */
void tell(const FailureBox& box, int error);
