#pragma once

#include <QDateTime>

#include <optional>
#include <string>
#include <string_view>

namespace standard {

/**
 * The moment that a Date field names, in UTC: as RFC 5322 sections 3.3 and 4.3 have it, also with the month
 * before the day, hyphens, full names and comments; or as ISO 8601. A zone that is missing, unknown or -0000
 * counts as UTC. Nothing for a date that does not exist, and for anything else.
 */
std::optional<QDateTime> momentOf(std::string_view field);

/** The moment of a Date field in local time, as `2026-11-21 17:42`; the field itself where it names none. */
std::string dateText(std::string_view field);

/** A moment as dateText() writes it. */
std::string localText(const QDateTime& moment);

} // namespace standard
