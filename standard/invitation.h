#pragma once

#include <string>
#include <string_view>

namespace standard {

/**
 * What an invitation is about (RFC 5545), each on a line of its own that ends with CR LF: the summary of each
 * event, its place behind "Where: ", its time behind "When: ". The time is local, as `2026-12-03 15:30`;
 * where the event is in another zone, its own time and that zone's name stand behind it in parentheses, or
 * its own time alone with the name of a zone that nobody knows. Empty when there is no event.
 * \param calendar UTF-8.
 */
std::string invitationText(std::string_view calendar);

} // namespace standard
