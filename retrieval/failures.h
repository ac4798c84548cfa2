#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

/** The box that tells of an error. */
struct FailureBox {
    /** "%1" stands for the error's number. Without a text there is no box. */
    const char* text;
    /** What follows the institution's name in the title. */
    const char* titleEnding;
};

/** What a person is told of one error of a session with the mail server, and what then happens. */
template <class Then>
struct Failure {
    int error;
    FailureBox box;
    Then then;
};

/** Stands in the last row of a table, for the errors that have no row. */
constexpr int kAnyOtherError = 0;

/** The row of that error, or else the last one. */
template <class Then, std::size_t rows>
const Failure<Then>& failureOf(const std::array<Failure<Then>, rows>& table, int error) {
    return *std::find_if(table.begin(), table.end() - 1,
                         [error](const Failure<Then>& row) { return row.error == error; });
}

/** Shows the box and waits until it is answered. */
void tell(const FailureBox& box, int error);
