#pragma once

#include "email/messages.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <string_view>

class frmFrom;

/** Bytes of a header field or a name that a text field shows. */
inline constexpr std::size_t kFieldBytes = 10'000;

/** Mail bytes for a place that shows one line: what has effects is shown instead. */
QString oneLine(std::string_view value, std::size_t mostBytes = kFieldBytes);

/** Shows the message's sender and subject in the window and its title. */
void showFields(const email::MessageSummary& message, frmFrom& window);

/** Runs the reading of a body; of a long one on a thread of its own, so that the windows stay responsive. */
void readWhereItBelongs(std::size_t bodyBytes, const std::function<void()>& read);
