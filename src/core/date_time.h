// Dates and times as the stores write and sort them, without any locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

/// Pure functions; any thread.
namespace kelmio {

/// A point in local civil time: seconds since the beginning of 30 December 1899, which is the zero date. A time
/// of day alone is a point on that day.
struct DateValue {
  std::int64_t seconds = 0;
  bool operator==(const DateValue&) const = default;
  bool operator<(const DateValue& other) const { return seconds < other.seconds; }
};

inline constexpr std::int64_t kSecondsPerMinute = 60;
inline constexpr std::int64_t kSecondsPerHour = 3600;
inline constexpr std::int64_t kSecondsPerDay = 86400;

/// Month and day may lie outside the calendar: month 13 is January of the next year, day 0 the last of the
/// month before. Nothing outside the years 100 to 9999.
std::optional<DateValue> DateFromParts(std::int64_t year, std::int64_t month, std::int64_t day);
DateValue DateValueOf(const LocalDateTime& moment);
LocalDateTime CivilTimeOf(DateValue value);

/// "mm/dd/yyyy" and "hh:nn:ss" (24 hours) as such; nothing for any other text or a date that isn't in the
/// calendar.
std::optional<DateValue> ParseDate(std::string_view text);
std::optional<DateValue> ParseTime(std::string_view text);

/// The forms of a moment, named by their patterns: m month, d day, y year, h hour, n minute, s second.
std::string FormatDdmmyyhhnnss(const LocalDateTime& moment);
/// "mm/dd/yyyy"
std::string FormatMonthDayYear(const LocalDateTime& moment, char separator = '/');
/// "dd/mm/yy"
std::string FormatDayMonthShortYear(const LocalDateTime& moment);
/// "hh:nn:ss", 24 hours
std::string FormatTime24(const LocalDateTime& moment);
/// "hh:nn:ss AMPM", 12 hours
std::string FormatTimeAmPm(const LocalDateTime& moment);

/// A number with at least two digits; a negative one with its sign before them.
std::string TwoDigits(std::int64_t number);

} // namespace kelmio
