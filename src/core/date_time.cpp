#include "core/date_time.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>

#include "core/text.h"

namespace kelmio {
namespace {

namespace chrono = std::chrono;

constexpr chrono::sys_days kZeroDate = chrono::year(1899) / 12 / 30;
constexpr std::int64_t kFirstYear = 100;
constexpr std::int64_t kLastYear = 9999;
constexpr int kNoon = 12;

// Three numbers between two separators, digits only.
std::optional<std::array<int, 3>> ThreeNumbers(std::string_view text, char separator) {
  constexpr std::size_t kMostDigits = 4;
  std::array<int, 3> numbers{};
  std::string_view rest = Trimmed(text);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::size_t end = rest.find(separator);
    if ((end == std::string_view::npos) != (i + 1 == numbers.size()))
      return std::nullopt;
    const std::string_view digits = rest.substr(0, end);
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.empty() || digits.size() > kMostDigits || !std::all_of(digits.begin(), digits.end(), is_digit))
      return std::nullopt;
    numbers[i] = static_cast<int>(LeadingNumber(digits));
    rest.remove_prefix(std::min(digits.size() + 1, rest.size()));
  }
  return numbers;
}

std::string PaddedYear(int year) {
  std::string digits = std::to_string(year);
  digits.insert(0, 4 - std::min<std::size_t>(digits.size(), 4), '0');
  return digits;
}

std::string ShortYear(int year) {
  return TwoDigits(year % 100);
}

} // namespace

std::optional<DateValue> DateFromParts(std::int64_t year, std::int64_t month, std::int64_t day) {
  constexpr std::int64_t kFarthest = 100000;
  if (year < kFirstYear || year > kLastYear || std::abs(month) > kFarthest || std::abs(day) > kFarthest * 100)
    return std::nullopt;
  const auto first_of_month = chrono::year_month(chrono::year(static_cast<int>(year)), chrono::January) +
                              chrono::months(static_cast<int>(month) - 1);
  const chrono::sys_days date = chrono::sys_days(first_of_month / 1) + chrono::days(day - 1);
  const int reached = static_cast<int>(chrono::year_month_day(date).year());
  if (reached < kFirstYear || reached > kLastYear)
    return std::nullopt;
  return DateValue{(date - kZeroDate).count() * kSecondsPerDay};
}

DateValue DateValueOf(const LocalDateTime& moment) {
  DateValue value = DateFromParts(moment.year, moment.month, moment.day).value_or(DateValue{});
  value.seconds += moment.hour * kSecondsPerHour + moment.minute * kSecondsPerMinute + moment.second;
  return value;
}

LocalDateTime CivilTimeOf(DateValue value) {
  const chrono::seconds since_zero(value.seconds);
  const auto whole_days = chrono::floor<chrono::days>(since_zero);
  const chrono::year_month_day date(kZeroDate + whole_days);
  const std::int64_t rest = (since_zero - whole_days).count();
  LocalDateTime moment;
  moment.year = static_cast<int>(date.year());
  moment.month = static_cast<int>(static_cast<unsigned>(date.month()));
  moment.day = static_cast<int>(static_cast<unsigned>(date.day()));
  moment.hour = static_cast<int>(rest / kSecondsPerHour);
  moment.minute = static_cast<int>(rest % kSecondsPerHour / kSecondsPerMinute);
  moment.second = static_cast<int>(rest % kSecondsPerMinute);
  return moment;
}

std::optional<DateValue> ParseDate(std::string_view text) {
  const auto parts = ThreeNumbers(text, '/');
  if (!parts)
    return std::nullopt;
  const auto [month, day, year] = *parts;
  const chrono::year_month_day date(chrono::year(year), chrono::month(static_cast<unsigned>(month)),
                                    chrono::day(static_cast<unsigned>(day)));
  return date.ok() ? DateFromParts(year, month, day) : std::nullopt;
}

std::optional<DateValue> ParseTime(std::string_view text) {
  const auto parts = ThreeNumbers(text, ':');
  if (!parts)
    return std::nullopt;
  const auto [hour, minute, second] = *parts;
  if (hour > 23 || minute > 59 || second > 59)
    return std::nullopt;
  return DateValue{hour * kSecondsPerHour + minute * kSecondsPerMinute + second};
}

std::string FormatDdmmyyhhnnss(const LocalDateTime& moment) {
  return TwoDigits(moment.day) + TwoDigits(moment.month) + ShortYear(moment.year) + TwoDigits(moment.hour) +
         TwoDigits(moment.minute) + TwoDigits(moment.second);
}

std::string FormatMonthDayYear(const LocalDateTime& moment, char separator) {
  return TwoDigits(moment.month) + separator + TwoDigits(moment.day) + separator + PaddedYear(moment.year);
}

std::string FormatDayMonthShortYear(const LocalDateTime& moment) {
  return TwoDigits(moment.day) + "/" + TwoDigits(moment.month) + "/" + ShortYear(moment.year);
}

std::string FormatTime24(const LocalDateTime& moment) {
  return TwoDigits(moment.hour) + ":" + TwoDigits(moment.minute) + ":" + TwoDigits(moment.second);
}

std::string FormatTimeAmPm(const LocalDateTime& moment) {
  LocalDateTime twelve = moment;
  twelve.hour = moment.hour % kNoon == 0 ? kNoon : moment.hour % kNoon;
  return FormatTime24(twelve) + (moment.hour < kNoon ? " AM" : " PM");
}

std::string TwoDigits(std::int64_t number) {
  std::string text = number < 0 ? "-" : "";
  const std::string digits = std::to_string(std::abs(number));
  if (digits.size() < 2)
    text += '0';
  return text += digits;
}

} // namespace kelmio
